#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "Utility/Utils/FileDescriptor.h"
#include "clients_common/ExitStatus.h"
#include "clients_common/Printable.h"
#include "daxctl/Commands.h"
#include "daxctl/EndRequest.h"
#include "daxctl/MonitorReport.h"
#include "monitor/BusWatch.h"
#include "monitor/CaptureFile.h"
#include "monitor/Conversation.h"

namespace daxctl {

namespace {

using clients_common::Refusal;
using monitor::Side;
namespace Names = DAX::DAXIPC::DBUSLowLevel::DBUSNames;

// How long what was on its way is waited for when the user has asked for the end.
const std::chrono::milliseconds LAST_MESSAGES(500);

// The capture or the picture may be all that is wanted: an output that was closed at the start is no failure.
void dropClosedOutput() {
    if ((::fcntl(STDOUT_FILENO, F_GETFL) & O_ACCMODE) == O_RDONLY) {
        const DAX::Common::Utils::FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        ::dup2(nowhere.get(), STDOUT_FILENO);
    }
}

// Runs `follow`, and tells at its end what there is to tell, also when it ends by a failure.
template <class Follow>
int reportOn(MonitorReport& report, const Follow& follow) {
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
void follow(monitor::BusWatch& bus, MonitorReport& report, const monitor::BusWatch::Take& take) {
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
    while (isWanted && waitForMore() && EndRequest::age() < LAST_MESSAGES) {
    }
}

// False when a signal has cut the message off, which is no failure: a reader of the capture may stand still.
bool writeUnlessEnding(monitor::CaptureWriter& writer, std::int64_t time, std::string_view bytes) {
    try {
        writer.write(time, bytes);
        return true;
    } catch (const std::runtime_error&) {
        if (!EndRequest::isMade()) {
            throw;
        }
        return false;
    }
}

int watchBus(const MonitorOptions& options, MonitorReport& report) {
    // Until it watches there is nothing to tell: a signal ends the process, whatever is waited for.
    monitor::BusWatch bus([] { return EndRequest::age() > LAST_MESSAGES; });
    std::optional<monitor::CaptureWriter> writer; // which empties a capture of before: only when there is a new one
    if (!options.writePath.empty()) {
        writer.emplace(options.writePath);
    }
    monitor::Conversation conversation(report.sink(), bus);
    conversation.setOwner(Side::SERVICE, bus.ownerOf(Names::DBUSService::DBUSIServiceManager::CONNECTION_NAME));
    conversation.setOwner(Side::CORE, bus.ownerOf(Names::DBUSCore::DBUSICore::CONNECTION_NAME()));
    const EndRequest signals;
    std::cerr << "Watching the bus. Ctrl-C ends." << std::endl;
    return reportOn(report, [&] {
        follow(bus, report, [&](const monitor::BusMessage& message, std::string_view bytes) {
            conversation.take(message);
            if (writer && !writeUnlessEnding(*writer, message.time, bytes)) {
                writer.reset();
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

int readFile(const MonitorOptions& options, MonitorReport& report) {
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

int runMonitor(const MonitorOptions& options, bool json) {
    dropClosedOutput();
    options.check();
    LongOutput output;
    const auto show = [&] {
        MonitorReport report(options, json, output);
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
