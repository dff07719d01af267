#pragma once

#include <memory>
#include <string>

#include <boost/core/noncopyable.hpp>

#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/SRegisterItem.h"

namespace DAX::Common::Utils {

// A named user's access to a registered singleton. It does not keep the singleton alive: a SingletonServiceGuard must
// do so as long as the pointer is used. If the pointer still exists when its singleton is destroyed, the process ends
// with an assertion that names the user. Belongs to one thread.
template <class T>
class SingletonPointer : private boost::noncopyable {
public:
    SingletonPointer(const std::string& user, const std::shared_ptr<SRegisterItem>& item) : m_user(user), m_item(item) {
        item->incrementUsage(m_user);
    }

    ~SingletonPointer() {
        if (const std::shared_ptr<SRegisterItem> item = m_item.lock()) {
            item->decrementUsage(m_user);
        }
    }

    // It is an assertion failure when the singleton is gone.
    T* operator->() {
        const std::shared_ptr<SRegisterItem> item = m_item.lock();
        if (!item) {
            BOOST_ASSERT_MSG(0, "You are trying to use non-existent singleton! It has been probably destroyed since "
                                "your getService. Check scopes of the singleton's guards");
        }
        T* const singleton = dynamic_cast<T*>(item->getRegisterable().get());
        if (singleton == nullptr) {
            BOOST_ASSERT_MSG(0, "It should never happen! Is was checked in getService, but Singleton's type probably "
                                "doesn't match with it's id");
        }
        return singleton;
    }

private:
    const std::string m_user;
    const std::weak_ptr<SRegisterItem> m_item;
};

} // namespace DAX::Common::Utils
