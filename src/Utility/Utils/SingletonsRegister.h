#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <boost/core/noncopyable.hpp>

#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/SRegisterItem.h"
#include "Utility/Utils/SingletonPointer.h"
#include "Utility/Utils/SingletonsID.h"

namespace DAX::Common::Utils {

// Owns the process-wide objects that other code reaches by identity. Each is created when it is first needed and
// destroyed when the last need is withdrawn, always before what it requires. Needs are best marked by a
// SingletonServiceGuard. Any thread may call anything, a singleton's factory, constructor and destructor too; to
// getService a singleton is invisible while it is being constructed or destroyed. Every misuse fails an assertion.
//
// Locks: the operation lock, then the map lock, then an item's own.
class SingletonsRegister : private boost::noncopyable {
public:
    using Factory = std::function<std::shared_ptr<RegisterableSingleton>()>;

    // The one register; it exists before main.
    static SingletonsRegister& getSingletonsRegister() { return instance; }

    // Marks one need of the singleton T and of all that it requires, transitively. The factory is called only when T
    // does not exist; what it throws passes and leaves everything as it was. T's requirements must exist: they are
    // never created here.
    template <class T>
    void markNeeded(SingletonsID id, Factory factory) {
        markNeeded(id, factory, &T::getRequirements);
    }

    // Withdraws one need of the singleton, and of all that it requires; what is needed no more is destroyed.
    void unmarkNeeded(SingletonsID id);

    // The singleton, which must exist, for the user of this name.
    template <class T>
    SingletonPointer<T> getService(const std::string& user, SingletonsID id) {
        const std::lock_guard<std::mutex> mapLock(m_mapMutex);
        const std::shared_ptr<SRegisterItem>& item = existingItem(id);
        if (dynamic_cast<T*>(item->getRegisterable().get()) == nullptr) {
            BOOST_ASSERT_MSG(0, "Singleton's type probably doesn't match with its id");
        }
        return SingletonPointer<T>(user, item);
    }

    // Makes a T whose constructor is protected.
    template <class T>
    static std::shared_ptr<T> defaultFactory() {
        struct enable_construct : public T {};
        return std::make_shared<enable_construct>();
    }

private:
    using Requirements = std::function<std::list<SingletonsID>()>;

    SingletonsRegister() = default;

    void markNeeded(SingletonsID id, const Factory& factory, const Requirements& requirements);
    bool has(SingletonsID id);
    void create(SingletonsID id, const Factory& factory, const Requirements& requirements);
    void incrementNeeds(SingletonsID id);

    // Under the map lock.
    template <class BeginIter, class EndIter>
    void checkRequirements(SingletonsID id, BeginIter&& first, EndIter&& last);
    const std::shared_ptr<SRegisterItem>& existingItem(SingletonsID id);

    static SingletonsRegister instance;

    std::map<SingletonsID, std::shared_ptr<SRegisterItem>> m_items;
    std::recursive_mutex m_operationMutex; // held for the length of a creation or destruction
    std::mutex m_mapMutex;                 // guards m_items; not held while foreign code runs
};

} // namespace DAX::Common::Utils
