#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "clients_common/ExitStatus.h"
#include "clients_common/Printable.h"
#include "daxctl/Commands.h"
#include "daxctl/EndRequest.h"
#include "daxctl/LongOutput.h"
#include "daxctl/MethodOption.h"
#include "monitor/BusWatch.h"
#include "monitor/CaptureFile.h"
#include "monitor/Conversation.h"
#include "monitor/Diagram.h"
#include "monitor/JsonView.h"
#include "monitor/Sinks.h"
#include "monitor/Summary.h"
#include "monitor/TextView.h"

namespace daxctl {

namespace {

using clients_common::Refusal;
using clients_common::WrongUsage;
using monitor::Side;
namespace Names = DAX::DAXIPC::DBUSLowLevel::DBUSNames;

struct MonitorOptions {
    bool service = false;
    bool core = false;
    std::set<std::string> methods;
    bool failures = false;
    std::string readPath;
    std::string writePath;
    std::string diagramPath;
    bool toScale = false;

    // Without a choice, both.
    std::set<Side> sides() const {
        std::set<Side> chosen;
        if (service || !core) {
            chosen.insert(Side::SERVICE);
        }
        if (core || !service) {
            chosen.insert(Side::CORE);
        }
        return chosen;
    }
};

// All that is made of the events: what is shown, the summary and the diagram.
class Report {
public:
    Report(const MonitorOptions& options, bool json, LongOutput& output)
        : m_options(options)
        , m_isJson(json)
        , m_output(output)
        , m_text(output.stream(), LongOutput::isColourful(), LongOutput::width)
        , m_json(output.stream())
        , m_failures(m_isJson ? static_cast<monitor::EventSink&>(m_json) : m_text)
        , m_filter(m_all, options.sides(), options.methods) {
        m_all.add(options.failures ? static_cast<monitor::EventSink&>(m_failures)
                  : json           ? static_cast<monitor::EventSink&>(m_json)
                                   : m_text);
        m_all.add(m_summary);
        if (!options.diagramPath.empty()) {
            m_all.add(m_diagram);
            check(std::ofstream(options.diagramPath, std::ios::app)); // now, not after hours of watching
        }
    }

    monitor::EventSink& sink() { return m_filter; }

    // Writes out what there is to show. False when nobody looks any more. Throws Refusal when it cannot be written.
    bool show() { return m_output.flush(); }

    // The same where nobody may be watching: as soon as enough has come together.
    bool showSome() { return m_output.stream() || show(); }

    void finish() {
        if (!m_options.diagramPath.empty()) {
            draw();
        }
        if (m_isJson) {
            m_json.write(m_summary.toJson());
        } else {
            m_output.stream() << "\n";
            m_summary.print(m_output.stream());
        }
        show();
    }

private:
    void draw() const {
        std::ofstream file(m_options.diagramPath);
        m_diagram.write(file, m_options.toScale ? monitor::Diagram::Scale::TIME : monitor::Diagram::Scale::COMPRESSED);
        file.flush();
        check(file);
    }

    void check(const std::ofstream& picture) const {
        if (!picture) {
            throw Refusal(m_options.diagramPath + ": " + std::strerror(errno));
        }
    }

    const MonitorOptions& m_options;
    bool m_isJson;
    LongOutput& m_output;
    monitor::TextView m_text;
    monitor::JsonView m_json;
    monitor::FailureFilter m_failures;
    monitor::Summary m_summary;
    monitor::Diagram m_diagram;
    monitor::SinkList m_all;
    monitor::SinkFilter m_filter;
};

// Runs `follow`, and tells at its end what there is to tell, also when it ends by a failure.
template <class Follow>
int reportOn(Report& report, const Follow& follow) {
    std::exception_ptr failure;
    try {
        follow();
    } catch (const std::exception&) {
        failure = std::current_exception();
    }
    report.finish();
    if (failure) {
        std::rethrow_exception(failure);
    }
    return clients_common::EXIT_DONE;
}

// Gives what comes to `take`, until the user has had enough.
void follow(monitor::BusWatch& bus, Report& report, const monitor::BusWatch::Take& take) {
    const std::chrono::milliseconds pause(100);
    std::size_t taken = 0;
    const auto waitForMore = [&] {
        const std::size_t before = taken;
        const bool isOpen = bus.wait(pause, [&](const monitor::BusMessage& message, std::string_view bytes) {
            ++taken;
            take(message, bytes);
        });
        if (!isOpen) {
            throw Refusal("The bus has ended the connection.");
        }
        return taken != before;
    };
    bool isWanted = true;
    while (isWanted && !EndRequest::isMade()) {
        waitForMore();
        isWanted = report.show();
    }
    // What was on its way when the user asked for the end. A bus that never falls silent must not hold it up.
    const std::chrono::milliseconds most(500);
    while (isWanted && waitForMore() && EndRequest::age() < most) {
    }
}

int watchBus(const MonitorOptions& options, Report& report) {
    // Until it watches there is nothing to tell: a signal ends the process, whatever is waited for.
    std::optional<monitor::CaptureWriter> writer;
    if (!options.writePath.empty()) {
        writer.emplace(options.writePath);
    }
    monitor::BusWatch bus;
    monitor::Conversation conversation(report.sink(), bus);
    conversation.setOwner(Side::SERVICE, bus.ownerOf(Names::DBUSService::DBUSIServiceManager::CONNECTION_NAME));
    conversation.setOwner(Side::CORE, bus.ownerOf(Names::DBUSCore::DBUSICore::CONNECTION_NAME()));
    const EndRequest signals;
    std::cerr << "Watching the bus. Ctrl-C ends." << std::endl;
    return reportOn(report, [&] {
        follow(bus, report, [&](const monitor::BusMessage& message, std::string_view bytes) {
            conversation.take(message);
            if (writer) {
                writer->write(message.time, bytes);
            }
        });
    });
}

// A signal makes the file end too early, or never begin, which is no failure then.
void readUntilItsEnd(const std::string& path, const monitor::TakeCaptured& take) {
    try {
        const monitor::CaptureEnd end = monitor::readCapture(path, take);
        if (!end.cutBecause.empty()) {
            throw Refusal(path + " is cut off behind message " + std::to_string(end.messages) + ": " + end.cutBecause);
        }
    } catch (const std::runtime_error&) {
        if (!EndRequest::isMade()) {
            throw;
        }
    }
}

int readFile(const MonitorOptions& options, Report& report) {
    const bool isStream = monitor::isStream(options.readPath);
    // This goes through the whole capture, and there is nothing to tell yet: a signal ends the process.
    monitor::CapturedProcesses processes(options.readPath);
    const EndRequest signals;
    monitor::Conversation conversation(report.sink(), processes);
    const auto take = [&](const std::optional<monitor::BusMessage>& message, std::int64_t time,
                          const std::string& reason) {
        if (message) {
            conversation.take(*message);
        } else {
            conversation.note(time, reason);
        }
        // Somebody may be watching a stream.
        return !EndRequest::isMade() && (isStream ? report.show() : report.showSome());
    };
    return reportOn(report, [&] { readUntilItsEnd(options.readPath, take); });
}

void checkMethods(const MonitorOptions& options) {
    const auto sides = options.sides();
    for (const std::string& method : options.methods) {
        const auto has = [&method](Side side) {
            return DAX::DAXIPC::DBUSLowLevel::findMethod(side, method) != nullptr;
        };
        if (!has(Side::SERVICE) && !has(Side::CORE)) {
            methodNamed(*sides.begin(), method);
        }
    }
}

bool isSameFile(const std::string& path, const std::string& other) {
    std::error_code none; // one that does not exist yet is no other
    return !path.empty() && (path == other || std::filesystem::equivalent(path, other, none));
}

void checkFiles(const MonitorOptions& options) {
    if (!options.readPath.empty() && !options.writePath.empty()) {
        throw WrongUsage("--write takes what a bus sends, not what --read brings.");
    }
    if (options.toScale && options.diagramPath.empty()) {
        throw WrongUsage("--time-scale is for --diagram.");
    }
    if (options.writePath == "-" || options.diagramPath == "-") {
        throw WrongUsage("The standard output has what is shown. Name a file.");
    }
    if (isSameFile(options.diagramPath, options.readPath) || isSameFile(options.diagramPath, options.writePath)) {
        throw WrongUsage("The picture would overwrite the capture. Name another file.");
    }
}

int runMonitor(const MonitorOptions& options, bool json) {
    checkMethods(options);
    checkFiles(options);
    LongOutput output;
    const auto show = [&] {
        Report report(options, json, output);
        return options.readPath.empty() ? watchBus(options, report) : readFile(options, report);
    };
    if (!json) {
        return show();
    }
    try {
        return show();
    } catch (const std::exception& error) { // one line, as all of them
        std::cerr << "daxctl: " << clients_common::printableLines(error.what()) << std::endl;
        monitor::JsonView(output.stream()).write({{"event", "error"}, {"error", error.what()}});
        output.stream().flush();
        return clients_common::EXIT_REFUSED;
    }
}

} // namespace

void addMonitorCommand(clients_common::Command& program) {
    static MonitorOptions options;
    auto command =
        program.addCommand("monitor", "Show what crosses the bus, decoded: calls, answers, who comes and goes",
                           [](bool json) { return runMonitor(options, json); });
    command.addFlag("--service", options.service, "Only calls of the update service");
    command.addFlag("--core", options.core, "Only calls of the update core");
    command.add("--method", options.methods, "Only calls of these methods");
    command.addFlag("--failures", options.failures, "Only refusals and failures, and services and cores that end");
    command.add("--read", options.readPath,
                "Read a capture instead: of --write, dbus-monitor --pcap or busctl capture; - is standard input");
    command.add("--write", options.writePath, "Write a capture of all that is seen, in the format of libpcap");
    command.add("--diagram", options.diagramPath, "At the end, draw the sequence as an SVG picture");
    command.addFlag("--time-scale", options.toScale, "In the picture, longer times are longer ways");
    command.footer("Ends with Ctrl-C and a summary. --json prints one object a line; the last one is the summary.");
}

} // namespace daxctl
