#pragma once

#include <nlohmann/json_fwd.hpp>

namespace clients_common {

// Writes one JSON document, indented and with a line end, to standard output. The fields keep their order; bytes that
// are not UTF-8 are replaced.
void printJson(const nlohmann::ordered_json& document);

} // namespace clients_common
