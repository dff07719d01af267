#pragma once

#include <set>
#include <string>
#include <vector>

#include <boost/optional.hpp>
#include <nlohmann/json.hpp>

#include "CoreInterface/SearchingTransactionParameters.h"
#include "Utility/Utils/Hexadecimal.h"

namespace DAXCoreSimulator {

// The form of a call's arguments in the record of calls.
inline nlohmann::ordered_json asJson(const std::string& text) {
    return text;
}
inline nlohmann::ordered_json asJson(bool flag) {
    return flag;
}
inline nlohmann::ordered_json asJson(const std::set<std::string>& items) {
    return items;
}
inline nlohmann::ordered_json asJson(const boost::optional<std::vector<unsigned char>>& bytes) {
    if (!bytes) {
        return nullptr;
    }
    return DAX::Common::Utils::toHexadecimal(*bytes);
}
inline nlohmann::ordered_json asJson(const DAX::Core::SearchingTransactionParameters& parameters) {
    return {{"upgradeType", static_cast<int>(parameters.upgradeType)},
            {"transactionType", static_cast<int>(parameters.transactionType)},
            {"isCellularConnectionAllowed", parameters.isCellularConnectionAllowed},
            {"wasAnySuccessfulUpgrade", parameters.wasAnySuccessfulUpgrade}};
}

} // namespace DAXCoreSimulator
