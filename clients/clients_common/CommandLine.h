#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace CLI {
class App;
}

namespace clients_common {

// What a command throws when it cannot do what it was asked for: ends the program with EXIT_REFUSED.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What a command throws when an argument says nothing that it understands: ends the program with EXIT_USAGE.
class WrongUsage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What the words on the command line chose.
struct CommandLine {
    bool json = false;
    std::function<int()> chosen; // does it and returns the exit status
};

// --json, which the program, its groups and its commands all take. `line` outlives `app`.
void addJsonFlag(CLI::App& app, CommandLine& line);

// Adds a command, with --json; `action` becomes `line.chosen` when it is chosen. `line` outlives `parent`.
CLI::App& addCommand(CLI::App& parent, CommandLine& line, const std::string& name, const std::string& description,
                     const std::function<int()>& action);

// Adds a group of commands, with --json, one of which must be named.
CLI::App& addGroup(CLI::App& parent, CommandLine& line, const std::string& name, const std::string& description);

// Parses the arguments, runs what they chose and returns the program's exit status: that of the command, EXIT_DONE
// after help, EXIT_USAGE after a wrong command line or WrongUsage, EXIT_REFUSED after any other exception. The
// exception's text goes to standard error behind the program's name, and with --json into a document {"error": text} as
// well.
int run(CLI::App& app, CommandLine& line, int argc, const char* const* argv);

} // namespace clients_common
