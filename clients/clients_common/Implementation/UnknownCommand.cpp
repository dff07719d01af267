#include "clients_common/Implementation/UnknownCommand.h"

#include <vector>

#include <CLI/CLI.hpp>

#include "clients_common/NearestWord.h"

namespace clients_common {

namespace {

std::vector<std::string> commandsOf(const CLI::App& group) {
    std::vector<std::string> names;
    for (const CLI::App* const command : group.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ", ") + word;
    }
    return text;
}

std::string complaint(const std::string& before, const std::string& word, const std::vector<std::string>& commands) {
    const auto nearest = nearestWord(word, commands);
    return "There is no command \"" + before + word + "\". " +
           (nearest ? "Did you mean \"" + before + *nearest + "\"?" : "The commands are: " + joined(commands) + ".");
}

} // namespace

std::optional<std::string> complaintAboutCommand(const CLI::App& program) {
    const CLI::App* group = &program;
    std::string before;
    while (!group->get_subcommands().empty()) {
        group = group->get_subcommands().front();
        before += group->get_name() + " ";
    }
    const std::vector<std::string> commands = commandsOf(*group);
    if (commands.empty()) {
        return std::nullopt;
    }
    for (const std::string& word : group->remaining()) {
        if (word.empty() || word.front() != '-') {
            return complaint(before, word, commands);
        }
    }
    return std::nullopt;
}

} // namespace clients_common
