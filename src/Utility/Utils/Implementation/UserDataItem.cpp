#include "Utility/Utils/UserDataItem.h"

#include <sstream>

#include <DAXProductionConfig.h>

#include "Utility/Utils/DAXAssert.h"

namespace DAX::Common::Utils {

UserDataItem::UserDataItem(void* data, const boost::optional<boost::thread::id>& expectedExecutor)
    : m_data(data), m_expectedExecutor(expectedExecutor) {}

void UserDataItem::removeData() {
    m_data.reset();
}

boost::optional<void*> UserDataItem::getData() {
    const boost::thread::id current = boost::this_thread::get_id();
    if (m_expectedExecutor && *m_expectedExecutor != current && !Debug::isProduction()) {
        std::ostringstream message;
        message << "This data is accessed from thread Id: " << current
                << ", while expected Id is: " << *m_expectedExecutor;
        BOOST_ASSERT_MSG(0, message.str().c_str());
    }
    return m_data;
}

} // namespace DAX::Common::Utils
