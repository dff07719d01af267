#include "clients_common/Output.h"

#include <iostream>

#include <nlohmann/json.hpp>

namespace clients_common {

void printJson(const nlohmann::ordered_json& document) {
    std::cout << document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << std::endl;
}

} // namespace clients_common
