#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

#include <unistd.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "clients_common/ExitStatus.h"
#include "daxctl/Commands.h"
#include "daxctl/Interruption.h"
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

bool isColourful() {
    const char* const terminal = std::getenv("TERM");
    return ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr && terminal != nullptr &&
           std::strcmp(terminal, "dumb") != 0;
}

// All that is made of the events: what is shown, the summary and the diagram.
class Report {
public:
    Report(const MonitorOptions& options, bool json)
        : m_options(options)
        , m_isJson(json)
        , m_text(std::cout, isColourful())
        , m_json(std::cout)
        , m_failures(m_isJson ? static_cast<monitor::EventSink&>(m_json) : m_text)
        , m_filter(m_all, options.sides(), options.methods) {
        m_all.add(options.failures ? static_cast<monitor::EventSink&>(m_failures)
                  : json           ? static_cast<monitor::EventSink&>(m_json)
                                   : m_text);
        m_all.add(m_summary);
        if (!options.diagramPath.empty()) {
            m_all.add(m_diagram);
        }
    }

    monitor::EventSink& sink() { return m_filter; }

    void finish() {
        if (m_isJson) {
            m_json.write(m_summary.toJson());
        } else {
            std::cout << "\n";
            m_summary.print(std::cout);
        }
        std::cout.flush();
        if (!m_options.diagramPath.empty()) {
            draw();
        }
    }

private:
    void draw() const {
        std::ofstream file(m_options.diagramPath);
        m_diagram.write(file, m_options.toScale ? monitor::Diagram::Scale::TIME : monitor::Diagram::Scale::COMPRESSED);
        if (!file.flush()) {
            throw Refusal(m_options.diagramPath + ": " + std::strerror(errno));
        }
    }

    const MonitorOptions& m_options;
    bool m_isJson;
    monitor::TextView m_text;
    monitor::JsonView m_json;
    monitor::FailureFilter m_failures;
    monitor::Summary m_summary;
    monitor::Diagram m_diagram;
    monitor::SinkList m_all;
    monitor::SinkFilter m_filter;
};

int watchBus(const MonitorOptions& options, Report& report) {
    Interruption interruption;
    std::optional<monitor::CaptureWriter> writer;
    if (!options.writePath.empty()) {
        writer.emplace(options.writePath);
    }
    monitor::BusWatch bus;
    monitor::Conversation conversation(report.sink(), bus);
    conversation.setOwner(Side::SERVICE, bus.ownerOf(Names::DBUSService::DBUSIServiceManager::CONNECTION_NAME));
    conversation.setOwner(Side::CORE, bus.ownerOf(Names::DBUSCore::DBUSICore::CONNECTION_NAME()));
    std::cerr << "Watching the bus. Ctrl-C ends." << std::endl;
    std::size_t taken = 0;
    const auto take = [&](const monitor::BusMessage& message, std::string_view bytes) {
        ++taken;
        if (writer) {
            writer->write(message.time, bytes);
        }
        conversation.take(message);
    };
    const std::chrono::milliseconds pause(100);
    bool isOpen = true;
    while (isOpen && !interruption.requested()) {
        isOpen = bus.wait(pause, take);
        std::cout.flush();
    }
    // What was on its way when the user asked for the end. A bus that never falls silent must not hold it up.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    for (std::size_t before = taken + 1; isOpen && before != taken && std::chrono::steady_clock::now() < deadline;) {
        before = taken;
        isOpen = bus.wait(pause, take);
    }
    conversation.end();
    report.finish();
    if (!isOpen) {
        throw Refusal("The bus has ended the connection.");
    }
    return clients_common::EXIT_DONE;
}

int readFile(const MonitorOptions& options, Report& report) {
    monitor::CapturedProcesses processes(options.readPath);
    monitor::Conversation conversation(report.sink(), processes);
    const monitor::CaptureEnd end =
        monitor::readCapture(options.readPath, [&conversation](const std::optional<monitor::BusMessage>& message,
                                                               std::int64_t time, const std::string& reason) {
            if (message) {
                conversation.take(*message);
            } else {
                conversation.note(time, reason);
            }
        });
    conversation.end();
    report.finish();
    if (!end.cutBecause.empty()) {
        throw Refusal(options.readPath + " is cut off behind message " + std::to_string(end.messages) + ": " +
                      end.cutBecause);
    }
    return clients_common::EXIT_DONE;
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

int runMonitor(const MonitorOptions& options, bool json) {
    checkMethods(options);
    if (!options.readPath.empty() && !options.writePath.empty()) {
        throw WrongUsage("--write takes what a bus sends, not what --read brings.");
    }
    if (options.toScale && options.diagramPath.empty()) {
        throw WrongUsage("--time-scale is for --diagram.");
    }
    Report report(options, json);
    return options.readPath.empty() ? watchBus(options, report) : readFile(options, report);
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
