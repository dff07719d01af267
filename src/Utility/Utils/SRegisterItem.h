#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <boost/core/noncopyable.hpp>

#include "Utility/Utils/RegisterableSingleton.h"
#include "Utility/Utils/SingletonsID.h"

namespace DAX::Common::Utils {

// An entry of the register: the only strong owner of a singleton, with the count of its needs and its users. Any thread
// may call. Destroying it while it is needed or used is an assertion failure, before the singleton is destroyed.
class SRegisterItem : private boost::noncopyable {
public:
    SRegisterItem(std::shared_ptr<RegisterableSingleton> registerable, SingletonsID id,
                  std::list<SingletonsID> requirements);
    ~SRegisterItem();

    void incrementNeeded();

    // Returns true when the count has reached zero.
    bool decrementNeeded();

    std::shared_ptr<RegisterableSingleton> getRegisterable() const { return m_registerable; }
    const std::list<SingletonsID>& getRequirements() const { return m_requirements; }

    // A user may be added several times. Removing one that is not there is an assertion failure.
    void incrementUsage(const std::string& user);
    void decrementUsage(const std::string& user);

private:
    std::string describe() const;

    const std::shared_ptr<RegisterableSingleton> m_registerable;
    const SingletonsID m_id;
    const std::list<SingletonsID> m_requirements;
    std::mutex m_usersMutex; // guards m_users
    std::atomic<std::uint32_t> m_neededCnt{0};
    std::vector<std::string> m_users;
};

} // namespace DAX::Common::Utils
