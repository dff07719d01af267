#include "clients_common/CommandLine.h"

#include <algorithm>
#include <iostream>

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "clients_common/ExitStatus.h"
#include "clients_common/Implementation/UnknownCommand.h"
#include "clients_common/Implementation/Version.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"

namespace clients_common {

namespace {

const char* const JSON_HELP = "Print one JSON document on standard output";

// What the parser knows of a command line that it did not understand depends on where it stopped.
bool wantsJson(int argc, const char* const* argv) {
    const char* const* const end = std::find(argv, argv + argc, std::string("--"));
    return std::find(argv, end, std::string("--json")) != end;
}

// Otherwise a file or a connection would get the number of one that is closed, and what is printed would go into it.
// Each is open for what it is not for, so that what is printed is known to be lost, and what is read to be missing.
void reserveStandardDescriptors() {
    int descriptor = -1;
    do {
        descriptor = ::open("/dev/null", ::fcntl(STDIN_FILENO, F_GETFD) < 0 ? O_WRONLY : O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

std::string joinedByNumber(const std::map<std::string, int>& numbers, const std::string& between) {
    std::map<int, std::string> words;
    for (const auto& [word, number] : numbers) {
        words[number] = word;
    }
    std::string text;
    for (const auto& [number, word] : words) {
        text += (text.empty() ? "" : between) + word;
    }
    return text;
}

} // namespace

Option& Option::required() {
    m_option->required();
    return *this;
}

Option& Option::showsDefault() {
    m_option->capture_default_str();
    return *this;
}

Option& Option::within(int least, int most) {
    m_option->check(CLI::Range(least, most));
    return *this;
}

Option& Option::positive() {
    m_option->check(CLI::PositiveNumber);
    return *this;
}

Option& Option::oneOf(const std::vector<std::string>& words) {
    m_option->check(CLI::IsMember(words));
    return *this;
}

Option& Option::existingFile() {
    m_option->check(CLI::ExistingFile);
    return *this;
}

Option& Option::check(const std::function<std::string(const std::string&)>& reasonAgainst) {
    m_option->check(reasonAgainst);
    return *this;
}

Option Command::add(const std::string& name, std::string& value, const std::string& description) {
    return Option(*m_app->add_option(name, value, description));
}

Option Command::add(const std::string& name, std::optional<std::string>& value, const std::string& description) {
    return Option(*m_app->add_option(name, value, description));
}

Option Command::add(const std::string& name, int& value, const std::string& description) {
    return Option(*m_app->add_option(name, value, description));
}

Option Command::add(const std::string& name, std::optional<int>& value, const std::string& description) {
    return Option(*m_app->add_option(name, value, description));
}

Option Command::add(const std::string& name, unsigned int& value, const std::string& description) {
    return Option(*m_app->add_option(name, value, description));
}

Option Command::add(const std::string& name, std::size_t& value, const std::string& description) {
    return Option(*m_app->add_option(name, value, description));
}

Option Command::add(const std::string& name, std::vector<std::string>& value, const std::string& description) {
    return Option(*m_app->add_option(name, value, description));
}

Option Command::add(const std::string& name, std::set<std::string>& value, const std::string& description) {
    return Option(*m_app->add_option(name, value, description));
}

Option Command::addWithOptionalNumber(const std::string& name, bool& isGiven, std::optional<int>& number,
                                      const std::string& numberName, const std::string& description) {
    const auto set = [&isGiven, &number](const std::string& text) {
        isGiven = true;
        if (!text.empty()) {
            number = std::stoi(text);
        }
    };
    const auto isNumber = [](std::string& text) -> std::string {
        int parsed = 0;
        const bool isGood = text.empty() || (CLI::detail::lexical_cast(text, parsed) && parsed >= 0);
        text = isGood && !text.empty() ? std::to_string(parsed) : text;
        return isGood ? "" : text + " is no number of 0 or more";
    };
    return Option(*m_app->add_option_function<std::string>(name, set, description)
                       ->transform(CLI::Validator(isNumber, ""))
                       ->expected(0, 1)
                       ->type_name("[" + numberName + "]"));
}

Option Command::addFlag(const std::string& name, bool& value, const std::string& description) {
    return Option(*m_app->add_flag(name, value, description));
}

Option Command::addNumbered(const std::string& name, const std::map<std::string, int>& byName,
                            const std::string& defaultName, const std::string& description,
                            const std::function<void(int)>& set) {
    const auto toNumber = [byName](std::string& text) -> std::string {
        for (const auto& [word, number] : byName) {
            if (CLI::detail::to_lower(word) == CLI::detail::to_lower(text) || std::to_string(number) == text) {
                text = std::to_string(number);
                return {};
            }
        }
        return text + " is none of " + joinedByNumber(byName, ", ");
    };
    return Option(*m_app->add_option_function<int>(name, set, description)
                       ->transform(CLI::Validator(toNumber, ""))
                       ->type_name(joinedByNumber(byName, "|"))
                       ->default_str(defaultName));
}

void Command::footer(const std::string& text) {
    m_app->footer(text);
}

void Command::note(const std::string& text) {
    const std::string end = m_app->get_footer();
    m_app->footer(text + "\n" + end);
}

Command Command::addCommand(const std::string& name, const std::string& description,
                            const std::function<int(bool json)>& action) {
    CLI::App& command = *m_app->add_subcommand(name, description);
    command.add_flag("--json", m_choice->json, JSON_HELP);
    // It is called after those of the command's own commands.
    command.callback([choice = m_choice, action, &command] {
        if (command.get_subcommands().empty()) {
            choice->action = action;
        }
    });
    return {command, *m_choice};
}

Command Command::addGroup(const std::string& name, const std::string& description) {
    Command group(*m_app->add_subcommand(name, description), *m_choice);
    group.requireCommand();
    return group;
}

void Command::requireCommand() {
    m_app->add_flag("--json", m_choice->json, JSON_HELP);
    m_app->require_subcommand(1);
}

struct Program::Parser {
    Parser(const std::string& name, const std::string& description) : app(description, name) {}

    CLI::App app;
    Choice choice;
};

Program::Program(const std::string& name, const std::string& description)
    : Program(std::make_unique<Parser>(name, description)) {}

Program::Program(std::unique_ptr<Parser> parser) : Command(parser->app, parser->choice), m_parser(std::move(parser)) {}

Program::~Program() = default;

void Program::addVersion() {
    m_parser->app.set_version_flag("--version", m_parser->app.get_name() + " " + VERSION, "Print the version and exit");
}

std::optional<int> Program::parse(int argc, const char* const* argv) {
    try {
        m_parser->app.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::Success& help) {
        m_parser->app.exit(help);
        return EXIT_DONE;
    } catch (const CLI::ParseError& error) {
        const std::string text = complaintAboutCommand(m_parser->app).value_or(error.what());
        std::cerr << printableLines(text) << "\nRun with --help for more information." << std::endl;
        if (wantsJson(argc, argv)) {
            printJson({{"error", text}, {"kind", KIND_USAGE}});
        }
        return EXIT_USAGE;
    }
}

int Program::run(int argc, const char* const* argv) {
    reserveStandardDescriptors();
    try {
        const std::optional<int> ended = parse(argc, argv);
        const int status = ended ? *ended : m_parser->choice.action(m_parser->choice.json);
        flushOutput();
        return status;
    } catch (const WrongUsage& error) {
        return reportFailure(error.what(), KIND_USAGE);
    } catch (const Refusal& error) {
        return reportFailure(error.what(), KIND_REFUSED);
    } catch (const std::exception& error) {
        return reportFailure(error.what(), KIND_FAILED);
    }
}

int Program::reportFailure(const std::string& text, const char* kind) const {
    std::cerr << m_parser->app.get_name() << ": " << printableLines(text) << std::endl;
    if (m_parser->choice.json) {
        printJson({{"error", text}, {"kind", kind}});
    }
    return std::string(kind) == KIND_USAGE ? EXIT_USAGE : EXIT_REFUSED;
}

} // namespace clients_common
