#include "clients_common/CommandLine.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"

namespace clients_common {

namespace {

int reportFailure(const CLI::App& app, const CommandLine& line, const std::string& text, ExitStatus status) {
    std::cerr << app.get_name() << ": " << text << std::endl;
    if (line.json) {
        printJson({{"error", text}});
    }
    return status;
}

} // namespace

void addJsonFlag(CLI::App& app, CommandLine& line) {
    app.add_flag("--json", line.json, "Print one JSON document on standard output");
}

CLI::App& addCommand(CLI::App& parent, CommandLine& line, const std::string& name, const std::string& description,
                     const std::function<int()>& action) {
    CLI::App& command = *parent.add_subcommand(name, description);
    addJsonFlag(command, line);
    command.callback([&line, action] { line.chosen = action; });
    return command;
}

CLI::App& addGroup(CLI::App& parent, CommandLine& line, const std::string& name, const std::string& description) {
    CLI::App& group = *parent.add_subcommand(name, description);
    addJsonFlag(group, line);
    group.require_subcommand(1);
    return group;
}

int run(CLI::App& app, CommandLine& line, int argc, const char* const* argv) {
    try {
        app.parse(argc, argv);
        return line.chosen();
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
    } catch (const WrongUsage& error) {
        return reportFailure(app, line, error.what(), EXIT_USAGE);
    } catch (const std::exception& error) {
        return reportFailure(app, line, error.what(), EXIT_REFUSED);
    }
}

} // namespace clients_common
