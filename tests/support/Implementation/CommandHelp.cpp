#include "support/CommandHelp.h"

#include <sstream>
#include <vector>

#include "support/Process.h"

namespace DAX::Tests {

namespace {

std::string helpOf(const std::string& program, const std::string& command) {
    Command line{{program}, {}, {}, {}};
    std::istringstream words(command);
    for (std::string word; words >> word;) {
        line.line.push_back(word);
    }
    line.line.emplace_back("--help");
    return run(line).output;
}

// The long name in "  -h,--help" or "  --no-finalize{false}"; empty when there is none.
std::string longName(const std::string& line) {
    const auto begin = line.find("--");
    const auto end = line.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", begin + 2);
    return begin == std::string::npos ? "" : line.substr(begin, end - begin);
}

CommandHelp parsed(const std::string& help) {
    CommandHelp result;
    std::istringstream lines(help);
    std::string part;
    for (std::string line; std::getline(lines, line);) {
        const bool isEntry = line.compare(0, 2, "  ") == 0 && line.size() > 2 && line[2] != ' ';
        if (!line.empty() && line.back() == ':' && !isEntry) {
            part = line;
        } else if (isEntry && part == "Options:") {
            const std::string name = longName(line.substr(0, line.find(' ', 2)));
            if (!name.empty()) {
                result.options.insert(name);
            }
        } else if (isEntry && part == "Subcommands:") {
            result.commands.insert(line.substr(2, line.find(' ', 2) - 2));
        }
    }
    return result;
}

void addCommands(const std::string& program, const std::string& command, std::map<std::string, CommandHelp>& all) {
    const CommandHelp help = parsed(helpOf(program, command));
    all[command] = help;
    for (const std::string& word : help.commands) {
        addCommands(program, command.empty() ? word : command + " " + word, all);
    }
}

} // namespace

std::map<std::string, CommandHelp> commandsOf(const std::string& program) {
    std::map<std::string, CommandHelp> all;
    addCommands(program, "", all);
    return all;
}

} // namespace DAX::Tests
