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

// Owns the process-wide objects that other code reaches by an id. Each one is created when it is first needed and
// destroyed when the last need is withdrawn, always before the ones that it requires. Mark needs by a
// SingletonServiceGuard. Any thread may call anything, and so may the factory, constructor and destructor of a
// singleton; getService() does not find a singleton that is being constructed or destroyed. Every misuse is an
// assertion failure.
//
// Lock order: the operation lock, the map lock, the lock of an item.
class SingletonsRegister : private boost::noncopyable {
public:
    using Factory = std::function<std::shared_ptr<RegisterableSingleton>()>;

    // The one register. It exists before main.
    static SingletonsRegister& getSingletonsRegister() { return instance; }

    // Marks one need of the singleton T and of everything that it requires, directly or not. The factory is called only
    // when T does not exist; what it throws passes, and nothing has changed then. What T requires must exist already:
    // it is never created here.
    template <class T>
    void markNeeded(SingletonsID id, Factory factory) {
        markNeeded(id, factory, &T::getRequirements);
    }

    // Withdraws one need of the singleton and of everything that it requires, and destroys what is no longer needed.
    void unmarkNeeded(SingletonsID id);

    // A pointer to the singleton, which must exist, for the user of this name.
    template <class T>
    SingletonPointer<T> getService(const std::string& user, SingletonsID id) {
        const std::lock_guard<std::mutex> mapLock(m_mapMutex);
        const std::shared_ptr<SRegisterItem>& item = existingItem(id);
        if (dynamic_cast<T*>(item->getRegisterable().get()) == nullptr) {
            BOOST_ASSERT_MSG(0, "Singleton's type probably doesn't match with its id");
        }
        return SingletonPointer<T>(user, item);
    }

    // Makes a T with a protected constructor.
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

    // To be called with the map lock held.
    template <class BeginIter, class EndIter>
    void checkRequirements(SingletonsID id, BeginIter&& first, EndIter&& last);
    const std::shared_ptr<SRegisterItem>& existingItem(SingletonsID id);

    static SingletonsRegister instance;

    std::map<SingletonsID, std::shared_ptr<SRegisterItem>> m_items;
    std::recursive_mutex m_operationMutex; // held during a whole creation or destruction
    std::mutex m_mapMutex;                 // guards m_items; not held while foreign code runs
};

} // namespace DAX::Common::Utils
