#include "Utility/Utils/UserDataRegister.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "Utility/Utils/SingletonsRegister.h"

namespace DAX::Common::Utils {
namespace {

// The items whose data mutex this thread holds, for its running callbacks.
std::vector<const UserDataItem*>& heldHere() {
    thread_local std::vector<const UserDataItem*> held;
    return held;
}

void* toPointer(int id) {
    // The id itself travels through the device's C calls; nobody follows the pointer.
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(id)); // NOLINT(performance-no-int-to-ptr)
}

} // namespace

UserDataRegister::~UserDataRegister() {
    if (!m_items.empty()) {
        BOOST_ASSERT_MSG(0, "There are some unregistered callbacks!");
    }
}

void* UserDataRegister::registerUserData(void* data, boost::optional<boost::thread::id> expectedExecutor) {
    const std::lock_guard<std::mutex> mapLock(m_userDataMapMutex);
    BOOST_ASSERT(m_id < std::numeric_limits<decltype(m_id)>::max());
    void* const id = toPointer(++m_id);
    DAX_LOG(VERBOSE) << "Registering callback. Callback Id: " << id;
    if (expectedExecutor) {
        DAX_LOG(VERBOSE) << "Expected executor thread Id: " << *expectedExecutor;
    } else {
        DAX_LOG(VERBOSE) << "Expected executor thread Id is not specified.";
    }
    if (m_items.count(id) != 0) {
        BOOST_ASSERT_MSG(false, "The callback id is already registered. It should never happen!");
    }
    m_items[id] = std::make_shared<UserDataItem>(data, expectedExecutor);
    return id;
}

void UserDataRegister::unregisterUserData(void* id) {
    DAX_LOG(VERBOSE) << "Unregistering callback. Id: " << id;
    std::unique_lock<std::mutex> mapLock(m_userDataMapMutex);
    const auto found = m_items.find(id);
    if (found == m_items.end()) {
        DAX_LOG(ERR) << "The callback has been already unregistered or it has never been registered. Id: " << id;
        return;
    }
    const std::shared_ptr<UserDataItem> item = found->second;
    m_items.erase(found);
    // Not held while the data mutex is awaited: the callback may be using the register.
    mapLock.unlock();

    // A callback that unregisters its own id holds the data mutex already.
    std::unique_lock<std::mutex> dataLock(item->dataMutex(), std::defer_lock);
    if (!isCalledBackHere(*item)) {
        dataLock.lock();
    }
    item->removeData();
}

std::shared_ptr<UserDataItem> UserDataRegister::getItem(void* id) {
    const std::lock_guard<std::mutex> mapLock(m_userDataMapMutex);
    const auto found = m_items.find(id);
    return found != m_items.end() ? found->second : nullptr;
}

std::shared_ptr<UserDataItem> UserDataRegister::find(void* id) {
    std::shared_ptr<UserDataItem> item = getItem(id);
    if (!item) {
        DAX_LOG(WRN) << "The callback is not registered or removed. ID:  " << id;
    }
    return item;
}

bool UserDataRegister::isCalledBackHere(const UserDataItem& item) {
    const std::vector<const UserDataItem*>& held = heldHere();
    return std::find(held.begin(), held.end(), &item) != held.end();
}

void UserDataRegister::awaitCallback(UserDataItem& item) {
    if (!isCalledBackHere(item)) {
        const std::lock_guard<std::mutex> dataLock(item.dataMutex());
    }
}

UserDataRegister::UserDataLock::UserDataLock(void* id)
    : m_item(SingletonsRegister::getSingletonsRegister()
                 .getService<UserDataRegister>("UserDataLock", UserDataRegister::getID())
                 ->find(id)) {
    if (!m_item) {
        return;
    }
    m_dataLock = std::unique_lock<std::mutex>(m_item->dataMutex());
    heldHere().push_back(m_item.get());
    if (!m_item->getData()) {
        DAX_LOG(WRN) << "The callback is unregistered. ID:  " << id
                     << "This will happen only if the callback is unregistered between unlocking 'user data map mutex' "
                        "and locking 'data mutex'.";
        return;
    }
    m_valid = true;
}

UserDataRegister::UserDataLock::~UserDataLock() {
    if (m_item) {
        std::vector<const UserDataItem*>& held = heldHere();
        held.erase(std::find(held.begin(), held.end(), m_item.get()));
    }
}

} // namespace DAX::Common::Utils
