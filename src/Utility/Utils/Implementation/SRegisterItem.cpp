#include "Utility/Utils/SRegisterItem.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include <boost/thread/thread.hpp>

#include "Utility/Utils/DAXAssert.h"

namespace DAX::Common::Utils {

SRegisterItem::SRegisterItem(std::shared_ptr<RegisterableSingleton> registerable, SingletonsID id,
                             std::list<SingletonsID> requirements)
    : m_registerable(std::move(registerable)), m_id(id), m_requirements(std::move(requirements)) {}

SRegisterItem::~SRegisterItem() {
    const boost::this_thread::disable_interruption uninterrupted;
    const std::lock_guard<std::mutex> lock(m_usersMutex);
    BOOST_ASSERT(m_neededCnt == 0);
    if (!m_users.empty()) {
        std::ostringstream message;
        message << "Singleton (" << describe() << ") is still used by:";
        for (const std::string& user : m_users) {
            message << " [" << user << "]";
        }
        BOOST_ASSERT_MSG(false, message.str().c_str());
    }
}

void SRegisterItem::incrementNeeded() {
    ++m_neededCnt;
}

bool SRegisterItem::decrementNeeded() {
    return --m_neededCnt == 0;
}

void SRegisterItem::incrementUsage(const std::string& user) {
    const std::lock_guard<std::mutex> lock(m_usersMutex);
    m_users.push_back(user);
}

void SRegisterItem::decrementUsage(const std::string& user) {
    const std::lock_guard<std::mutex> lock(m_usersMutex);
    const auto found = std::find(m_users.begin(), m_users.end(), user);
    if (found == m_users.end()) {
        const std::string message =
            "User '" + user + "' is not registered as user of this singleton (" + describe() + ")";
        BOOST_ASSERT_MSG(false, message.c_str());
    }
    m_users.erase(found);
}

std::string SRegisterItem::describe() const {
    std::ostringstream text;
    text << m_id << "=" << singletonsIdToString(m_id);
    return text.str();
}

} // namespace DAX::Common::Utils
