#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace clients_common {

// After a command line was not understood: what to tell of a word that stands where a command is expected and is none,
// with the command that was likely meant. Empty when something else was wrong.
std::optional<std::string> complaintAboutCommand(const CLI::App& program);

} // namespace clients_common
