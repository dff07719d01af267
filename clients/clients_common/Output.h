#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace clients_common {

// What a document of a command that did not end with EXIT_DONE says in "kind".
inline constexpr char KIND_REFUSED[] = "refused"; // not now, or there is no such thing
inline constexpr char KIND_FAILED[] = "failed";
inline constexpr char KIND_USAGE[] = "usage"; // the command line was wrong

// The document in one line, or indented by so many blanks. The fields keep their order; bytes that are not UTF-8 are
// replaced, and letters that a terminal would obey are \uNNNN.
std::string jsonText(const nlohmann::ordered_json& document, int indent = -1);

// Writes one JSON document, indented and with a line end, to standard output.
void printJson(const nlohmann::ordered_json& document);

// Writes out what is buffered for standard output. Throws Refusal when that, or anything before it, could not be
// written.
void flushOutput();

} // namespace clients_common
