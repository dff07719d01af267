#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>

#include <boost/core/noncopyable.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/optional.hpp>
#include <boost/thread/thread_only.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/RegisterableSingleton.h"
#include "Utility/Utils/SingletonsID.h"
#include "Utility/Utils/UserDataItem.h"

namespace DAX::Common::Utils {

// Lets C interfaces call back objects that may be gone by then. Such an interface gets a small number as its user data,
// never a pointer to an object; GenericFunctorCallback looks the object up under a lock. The register is a registered
// singleton and must outlive every registration (an assertion). Any thread may call anything.
//
// Lock order: the map mutex, then a data mutex; but nobody waits for a data mutex while holding the map mutex. The data
// mutex of an id is held while its callback runs. So a callback may register, and may unregister itself and others; but
// two callbacks that unregister each other at the same time wait for ever.
class UserDataRegister : public RegisterableSingleton {
public:
    class UserDataLock;
    template <class Function>
    class GenericFunctorCallback;

    // What RegisterableSingleton asks for. It requires no other singleton.
    static SingletonsID getID() { return USER_DATA_REGISTER; }
    static std::list<SingletonsID> getRequirements() { return {}; }

    ~UserDataRegister() override;

    // Returns a new id: 1 for the first one, then counting up; no id is used twice. `data` is borrowed until the id is
    // unregistered. On software that is not for production, it is an assertion failure when any other thread than
    // `expectedExecutor` reaches the data.
    void* registerUserData(void* data, boost::optional<boost::thread::id> expectedExecutor);

    // On return no callback for this id runs or will start, except one that makes this very call. An id that is not
    // registered is only logged.
    void unregisterUserData(void* id);

    // The item of a registered id; null for one that is not registered. It may be kept beyond the registration.
    std::shared_ptr<UserDataItem> getItem(void* id);

    // Whether the calling thread is running a callback for this item.
    static bool isCalledBackHere(const UserDataItem& item);

    // Waits until no other thread runs a callback for this item. Returns at once when the calling thread runs one.
    static void awaitCallback(UserDataItem& item);

protected:
    explicit UserDataRegister(int lastId = 0) : m_id(lastId) {}

private:
    // Like getItem(), but logs an id that is not registered.
    std::shared_ptr<UserDataItem> find(void* id);

    int m_id;
    std::map<void*, std::shared_ptr<UserDataItem>> m_items;
    std::mutex m_userDataMapMutex; // guards both above
};

// Locks the data of an id: while a valid lock lives, no other thread removes the data. Belongs to the thread that made
// it.
class UserDataRegister::UserDataLock : private boost::noncopyable {
public:
    explicit UserDataLock(void* id);
    ~UserDataLock();

    // Whether the id had data when the lock was made.
    explicit operator bool() const { return m_valid; }

    // The data. Only for a valid lock, and only until its own thread unregisters the id.
    void* getData() const { return *m_item->getData(); }

private:
    bool m_valid = false;
    std::shared_ptr<UserDataItem> m_item;
    std::unique_lock<std::mutex> m_dataLock;
};

// What a C interface gets: the address of call<RetVal>, with an id of the register as user data. The data of that id is
// a std::function<R(Args...)>. R must not be void.
template <class R, class... Args>
class UserDataRegister::GenericFunctorCallback<R(Args...)> {
public:
    // Calls a copy of the function that is registered under the id; returns RetVal when there is none any more. An
    // exception of the function ends the process, since no C interface may see one.
    template <R RetVal = R()>
    static R call(Args... args, void* id) noexcept {
        try {
            const UserDataLock lock(id);
            if (lock) {
                const std::function<R(Args...)> function = *static_cast<std::function<R(Args...)>*>(lock.getData());
                return function(args...);
            }
            DAX_LOG(WRN) << "The callback can not be called. ID:  " << id;
        } catch (...) {
            DAX_LOG(FTL) << "Exception caught during GenericFunctorCallback:"
                         << boost::current_exception_diagnostic_information(true);
            BOOST_ASSERT_MSG(false, "Callbacks must not throw!");
        }
        return RetVal;
    }
};

} // namespace DAX::Common::Utils
