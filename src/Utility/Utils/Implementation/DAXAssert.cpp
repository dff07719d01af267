#include "Utility/Utils/DAXAssert.h"

#include <cstdlib>
#include <sstream>
#include <string>

#include "Common/Logging/Logging.h"
#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEvents.h"

using DAX::Common::Logging::LOG_TAG;
using DAX::Common::Logging::LoggingClass;
using DAX::Platform::KpiEvent::CErrorEvent;

namespace {

std::string describe(const char* expr, const char* msg, const char* function, const char* shortFile, long line) {
    std::ostringstream text;
    text << "ASSERTION FAILED: " << expr << ", " << function << ", " << shortFile << ":" << line;
    if (msg != nullptr) {
        text << "\nMESSAGE: " << msg;
    }
    return text.str();
}

void printEverywhere(const char* text) {
    LoggingClass::print(LoggingClass::printDirect, LOG_TAG, LoggingClass::FTL, nullptr, 0, "%s", text);
    LoggingClass::print(LoggingClass::printLines, LOG_TAG, LoggingClass::FTL, nullptr, 0, "%s:%d>%s",
                        LoggingClass::shortenPath(__FILE__), __LINE__, text);
}

} // namespace

namespace boost {

void assertion_failed_msg(const char* expr, const char* msg, const char* function, const char* file, long line) {
    const char* const shortFile = LoggingClass::shortenPath(file);
    const std::string text = describe(expr, msg, function, shortFile, line);
    sendKPIEventToServer(CErrorEvent(shortFile, function, std::to_string(line), expr, msg != nullptr ? msg : ""));
    printEverywhere(text.c_str());
    std::abort();
}

void assertion_failed(const char* expr, const char* function, const char* file, long line) {
    assertion_failed_msg(expr, nullptr, function, file, line);
}

} // namespace boost

namespace DAX {
namespace Common {
namespace Utils {

void DAXAssertionFailed(const char* expr, const char* function, const char* file, long line) {
    boost::assertion_failed(expr, function, file, line);
    std::abort();
}

void DAXAssertionFailedMsg(const char* expr, const char* msg, const char* function, const char* file, long line) {
    boost::assertion_failed_msg(expr, msg, function, file, line);
    std::abort();
}

} // namespace Utils
} // namespace Common
} // namespace DAX
