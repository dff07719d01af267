#include "Utility/Utils/SingletonsRegister.h"

#include <sstream>

#include "Common/Logging/LoggingStream.h"

namespace DAX::Common::Utils {

SingletonsRegister SingletonsRegister::instance;

void SingletonsRegister::markNeeded(SingletonsID id, const Factory& factory, const Requirements& requirements) {
    const std::lock_guard<std::recursive_mutex> operationLock(m_operationMutex);
    DAX_LOG(INF) << "Needed: singleton id: " << id;
    if (!has(id)) {
        create(id, factory, requirements);
    }
    incrementNeeds(id);
}

bool SingletonsRegister::has(SingletonsID id) {
    const std::lock_guard<std::mutex> mapLock(m_mapMutex);
    return m_items.count(id) != 0;
}

void SingletonsRegister::create(SingletonsID id, const Factory& factory, const Requirements& requirements) {
    DAX_LOG(INF) << "Creating : singleton id: " << id;
    std::list<SingletonsID> required = requirements();
    auto item = std::make_shared<SRegisterItem>(factory(), id, std::move(required));
    const std::lock_guard<std::mutex> mapLock(m_mapMutex);
    m_items[id] = std::move(item);
}

void SingletonsRegister::incrementNeeds(SingletonsID id) {
    const std::lock_guard<std::mutex> mapLock(m_mapMutex);
    std::list<SingletonsID> work{id};
    for (auto element = work.begin(); element != work.end(); ++element) {
        // The list grows while it is walked: each requirement counts once for every path that leads to it.
        const std::shared_ptr<SRegisterItem>& item = existingItem(*element);
        const std::list<SingletonsID>& required = item->getRequirements();
        checkRequirements(*element, work.insert(work.end(), required.begin(), required.end()), work.end());
        item->incrementNeeded();
    }
}

template <class BeginIter, class EndIter>
void SingletonsRegister::checkRequirements(SingletonsID id, BeginIter&& first, EndIter&& last) {
    for (auto required = first; required != last; ++required) {
        if (m_items.count(*required) != 0) {
            continue;
        }
        std::ostringstream all;
        for (auto each = first; each != last; ++each) {
            all << " " << *each;
        }
        DAX_LOG(INF) << "Cannot meet requirements of given singleton: " << id
                     << ". Cannot find singleton: " << *required
                     << " required by given singleton. All requirements: " << all.str();
        BOOST_ASSERT_MSG(0, "Cannot meet requirements of given singleton. Cannot find singletons required by given "
                            "singleton.");
    }
}

void SingletonsRegister::unmarkNeeded(SingletonsID id) {
    const std::lock_guard<std::recursive_mutex> operationLock(m_operationMutex);
    std::list<SingletonsID> work{id};
    for (auto element = work.begin(); element != work.end(); ++element) {
        DAX_LOG(INF) << "Unmarking needed: singleton id: " << *element;
        std::unique_lock<std::mutex> mapLock(m_mapMutex);
        const auto found = m_items.find(*element);
        if (found == m_items.end()) {
            BOOST_ASSERT(0);
        }
        std::shared_ptr<SRegisterItem> item = found->second;
        if (item->decrementNeeded()) {
            DAX_LOG(INF) << "Singleton: " << *element << " will be deleted.";
            m_items.erase(found);
        }
        const std::list<SingletonsID>& required = item->getRequirements();
        work.insert(work.end(), required.begin(), required.end());
        mapLock.unlock();
        item.reset(); // without the map lock: the singleton's destructor may use the register
    }
}

const std::shared_ptr<SRegisterItem>& SingletonsRegister::existingItem(SingletonsID id) {
    const auto found = m_items.find(id);
    if (found == m_items.end()) {
        const std::string message = "Singleton " + singletonsIdToString(id) + " does not exist.";
        BOOST_ASSERT_MSG(0, message.c_str());
    }
    return found->second;
}

} // namespace DAX::Common::Utils
