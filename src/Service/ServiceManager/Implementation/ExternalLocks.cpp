#include "Service/ServiceManager/Implementation/ExternalLocks.h"

#include <cstddef>

namespace DAX::Service::ServiceManager {

std::string describeHolders(const ExternalLocks& locks) {
    const std::size_t longestText = std::size_t{64} * 1024;
    std::string holders;
    std::size_t left = locks.size();
    for (const auto& [id, lock] : locks) {
        if (holders.size() > longestText) {
            return holders.append(", and ").append(std::to_string(left)).append(" more");
        }
        holders.append(1, ' ').append(lock.first);
        --left;
    }
    return holders;
}

} // namespace DAX::Service::ServiceManager
