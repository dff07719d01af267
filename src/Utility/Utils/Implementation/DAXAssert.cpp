#include "Utility/Utils/DAXAssert.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "Common/Logging/Logging.h"
#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEvents.h"

using DAX::Common::Logging::LOG_TAG;
using DAX::Common::Logging::LoggingClass;
using DAX::Platform::KpiEvent::CErrorEvent;

namespace {

const std::size_t LONGEST_TEXT = 16384; // the longest message of the log

// The facts of a failed assertion.
struct Failure {
    const char* expr;
    const char* msg; // null when there is none
    const char* function;
    const char* shortFile;
    long line;
};

// Uses no heap memory: there may be none left.
void describe(const Failure& failure, char (&text)[LONGEST_TEXT]) {
    std::snprintf(text, sizeof(text), "ASSERTION FAILED: %s, %s, %s:%ld%s%s", failure.expr, failure.function,
                  failure.shortFile, failure.line, failure.msg != nullptr ? "\nMESSAGE: " : "",
                  failure.msg != nullptr ? failure.msg : "");
}

void logDirectly(const char* text) {
    LoggingClass::print(LoggingClass::printDirect, LOG_TAG, LoggingClass::FTL, nullptr, 0, "%s", text);
}

void log(const char* text) {
    LoggingClass::print(LoggingClass::printLines, LOG_TAG, LoggingClass::FTL, nullptr, 0, "%s:%d>%s",
                        LoggingClass::shortenPath(__FILE__), __LINE__, text);
}

void logUnsentEvent(const char* reason) {
    LoggingClass::print(LoggingClass::printLines, LOG_TAG, LoggingClass::FTL, nullptr, 0,
                        "%s:%d>The error event cannot be sent: %s", LoggingClass::shortenPath(__FILE__), __LINE__,
                        reason);
}

void sendEvent(const Failure& failure) {
    try {
        sendKPIEventToServer(CErrorEvent(failure.shortFile, failure.function, std::to_string(failure.line),
                                         failure.expr, failure.msg != nullptr ? failure.msg : ""));
    } catch (const std::exception& exception) {
        logUnsentEvent(exception.what());
    } catch (...) {
        logUnsentEvent("unknown exception");
    }
}

// Makes one report. If it fails, the next ones must follow all the same.
template <class Report>
void tryTo(const Report& report) noexcept {
    try {
        report();
    } catch (...) {
    }
}

// The text of the assertion whose event this thread is sending. If the sending itself fails an assertion or ends the
// process, this text must still be reported.
thread_local const char* untold = nullptr;

void tell(const char* text) noexcept {
    tryTo([text] { logDirectly(text); });
    tryTo([text] { log(text); });
}

[[noreturn]] void tellTheUntold() {
    if (untold != nullptr) {
        tell(untold);
    }
    std::abort();
}

[[noreturn]] void reportAndAbort(const char* expr, const char* msg, const char* function, const char* file,
                                 long line) noexcept {
    const Failure failure{expr, msg, function, LoggingClass::shortenPath(file), line};
    char text[LONGEST_TEXT];
    describe(failure, text);
    if (untold == nullptr) {
        untold = text;
        std::set_terminate(tellTheUntold);
        tryTo([&failure] { sendEvent(failure); });
        untold = nullptr;
    }
    tell(text);
    tellTheUntold();
}

} // namespace

namespace boost {

void assertion_failed_msg(const char* expr, const char* msg, const char* function, const char* file, long line) {
    reportAndAbort(expr, msg, function, file, line);
}

void assertion_failed(const char* expr, const char* function, const char* file, long line) {
    reportAndAbort(expr, nullptr, function, file, line);
}

} // namespace boost

namespace DAX::Common::Utils {

void DAXAssertionFailed(const char* expr, const char* function, const char* file, long line) noexcept {
    reportAndAbort(expr, nullptr, function, file, line);
}

void DAXAssertionFailedMsg(const char* expr, const char* msg, const char* function, const char* file,
                           long line) noexcept {
    reportAndAbort(expr, msg, function, file, line);
}

} // namespace DAX::Common::Utils
