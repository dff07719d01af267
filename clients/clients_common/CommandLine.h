#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

// A program's command line: its commands, groups of commands and options. The library that parses it stays behind this
// header, since its own costs a compiler some 15 s in each source.
namespace clients_common {

// Thrown by a command that cannot do what it was asked for. Ends the program with EXIT_REFUSED.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Thrown by a command that does not understand an argument. Ends the program with EXIT_USAGE.
class WrongUsage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// An option or a positional argument of a command, for as long as the command lives.
class Option {
public:
    explicit Option(CLI::Option& option) : m_option(&option) {}

    Option& required();
    // Shows the variable's value of now as the default in the help.
    Option& showsDefault();
    Option& within(int least, int most);
    Option& positive();
    Option& oneOf(const std::vector<std::string>& words);
    Option& existingFile();
    // `reasonAgainst` returns what is wrong with the text, or nothing.
    Option& check(const std::function<std::string(const std::string&)>& reasonAgainst);

private:
    CLI::Option* m_option;
};

// What the user chose on the command line.
struct Choice {
    bool json = false;
    std::function<int(bool json)> action; // returns the exit status
};

// A command, a group of commands or the program itself. It writes each option that is given into a variable of the
// caller's, which outlives the parsing. A name is "--long" for an option and "UPPER" for a positional argument.
class Command {
public:
    Command(CLI::App& app, Choice& choice) : m_app(&app), m_choice(&choice) {}

    Option add(const std::string& name, std::string& value, const std::string& description = "");
    Option add(const std::string& name, std::optional<std::string>& value, const std::string& description = "");
    Option add(const std::string& name, int& value, const std::string& description = "");
    Option add(const std::string& name, std::optional<int>& value, const std::string& description = "");
    Option add(const std::string& name, unsigned int& value, const std::string& description = "");
    Option add(const std::string& name, std::size_t& value, const std::string& description = "");
    // Every text that is given.
    Option add(const std::string& name, std::vector<std::string>& value, const std::string& description = "");
    Option add(const std::string& name, std::set<std::string>& value, const std::string& description = "");
    // An option that may stand alone: then `isGiven` alone is set. The number is 0 or more.
    Option addWithOptionalNumber(const std::string& name, bool& isGiven, std::optional<int>& number,
                                 const std::string& numberName, const std::string& description);
    // A name that begins with "!" stands for false.
    Option addFlag(const std::string& name, bool& value, const std::string& description);
    // One of the names, in letters of any case, or its number. The help shows the names, and `defaultName`.
    template <class Enum>
    Option addNamed(const std::string& name, Enum& value, const std::map<std::string, Enum>& byName,
                    const std::string& defaultName, const std::string& description) {
        std::map<std::string, int> numbers;
        for (const auto& [text, number] : byName) {
            numbers[text] = static_cast<int>(number);
        }
        return addNumbered(name, numbers, defaultName, description,
                           [&value](int number) { value = static_cast<Enum>(number); });
    }
    // What the help ends with, also that of the commands that are added from now on.
    void footer(const std::string& text);
    // What this command's own help says before its end.
    void note(const std::string& text);

    // Adds a command, with --json. `action` is what the program does when the command is chosen, and none of those that
    // were added to the command itself.
    Command addCommand(const std::string& name, const std::string& description,
                       const std::function<int(bool json)>& action);
    // Adds a group of commands with --json. The user must name one of its commands.
    Command addGroup(const std::string& name, const std::string& description);

protected:
    void requireCommand();

private:
    Option addNumbered(const std::string& name, const std::map<std::string, int>& byName,
                       const std::string& defaultName, const std::string& description,
                       const std::function<void(int)>& set);

    CLI::App* m_app;
    Choice* m_choice;
};

// The program itself. Its options come from its own command line alone.
class Program : public Command {
public:
    Program(const std::string& name, const std::string& description);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // From now on one command must be named, and --json is known.
    using Command::requireCommand;

    // From now on --version prints the program's name and version, and ends the program with EXIT_DONE.
    void addVersion();

    // Parses the arguments. Returns nothing when the program is to go on. Otherwise the status with which it is to end:
    // EXIT_DONE after help, EXIT_USAGE after a wrong command line, told on standard error.
    std::optional<int> parse(int argc, const char* const* argv);

    // Parses the arguments, runs the command that they chose and returns the program's exit status: that of the
    // command, EXIT_USAGE after WrongUsage, EXIT_REFUSED after any other exception and when standard output could not
    // be written, or what parse() returned. The exception's text goes to standard error behind the program's name, and
    // with --json into a document {"error": text, "kind": …} as well, whose kinds are those of Output.h.
    int run(int argc, const char* const* argv);

private:
    struct Parser;

    explicit Program(std::unique_ptr<Parser> parser);
    int reportFailure(const std::string& text, const char* kind) const;

    const std::unique_ptr<Parser> m_parser;
};

} // namespace clients_common
