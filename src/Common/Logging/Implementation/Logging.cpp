#include "Common/Logging/Logging.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include <dlog.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Common/Logging/Implementation/Version.h"

namespace DAX::Common::Logging {

const char* const LOG_TAG = "org.kovan.tv.dax.DAX";

const int LoggingClass::maxMessageLength;
// Made first, so that it outlives every object that logs in its destructor.
__attribute__((init_priority(101))) std::string LoggingClass::m_processName;
bool LoggingClass::m_bSocketInitialized = false;

namespace {

// How the system log shows a level.
struct LevelRoute {
    const char* name;
    int logId;
    int priority;
    const char* format; // process, thread, line number, text
};

const LevelRoute& routeOf(LoggingClass::Level level) {
    static constexpr LevelRoute ROUTES[] = {
        {"VERBOSE", 0, 2, "[%s][%s][%u][VERBOSE] %s"}, {"DBG", 0, 3, "[%s][%s][%u][DBG] %s"},
        {"INF", 0, 4, "[%s][%s][%u][INF] %s"},         {"WRN", 0, 5, "[%s][%s][%u][WRN] %s"},
        {"ERR", 2, 5, "[%s][%s][%u][ERR] %s"},         {"FTL", 2, 7, "[%s][%s][%u][FTL] %s"},
    };
    static constexpr LevelRoute UNKNOWN = {"UNKNOWN LEVEL", 2, 6, "[%s][%s][%u][INF] %s"};
    const bool known = level >= LoggingClass::VERBOSE && level <= LoggingClass::FTL;
    return known ? ROUTES[level - LoggingClass::VERBOSE] : UNKNOWN;
}

// A formatted message. Most fit into the object itself; a longer one goes to the heap, or is cut when there is no
// memory.
class FormattedText {
public:
    FormattedText(const char* format, va_list arguments) {
        va_list again;
        va_copy(again, arguments); // the first vsnprintf uses `arguments` up
        const int needed = std::vsnprintf(m_short, sizeof(m_short), format, arguments);
        if (needed >= static_cast<int>(sizeof(m_short))) {
            m_long.reset(new (std::nothrow) char[LONG_SIZE]());
        }
        if (m_long) {
            m_text = m_long.get();
            m_size = LONG_SIZE;
            std::vsnprintf(m_text, m_size, format, again);
        }
        va_end(again);
    }

    char* text() { return m_text; }
    size_t size() const { return m_size; }

private:
    static constexpr size_t LONG_SIZE = 16384;

    char m_short[1024] = "";
    std::unique_ptr<char[]> m_long;
    char* m_text = m_short;
    size_t m_size = sizeof(m_short);
};

constexpr int DUMP_ROW_BYTES = 16;
constexpr size_t DUMP_ROW_LENGTH = 64; // longer than any row

void formatDumpRow(char (&row)[DUMP_ROW_LENGTH], int number, const unsigned char* bytes, int count) {
    char* end = row + std::snprintf(row, sizeof(row), " %04x=", static_cast<unsigned int>(number));
    for (int i = 0; i < count; ++i) {
        end += std::snprintf(end, 3, "%02x", bytes[i]);
    }
}

// Each row begins with its number, not with the offset of its bytes.
void dump(LoggingClass::Sink sink, const char* tag, LoggingClass::Level level, FormattedText& message,
          const unsigned char* bytes, int length) {
    char* const rowStart = message.text() + std::strlen(message.text());
    const size_t room = message.size() - static_cast<size_t>(rowStart - message.text());
    for (int offset = 0; offset < length; offset += DUMP_ROW_BYTES) {
        char row[DUMP_ROW_LENGTH];
        formatDumpRow(row, offset / DUMP_ROW_BYTES, bytes + offset, std::min(DUMP_ROW_BYTES, length - offset));
        const std::size_t rowLength = std::strlen(row);
        if (rowLength >= room) {
            char warning[] = "BELOW DATA MESSAGE IS TOO LONG TO BE DISPLAYED!";
            *rowStart = '\0';
            sink(tag, LoggingClass::WRN, warning);
            sink(tag, level, message.text());
            return;
        }
        std::memcpy(rowStart, row, rowLength + 1);
        sink(tag, level, message.text());
    }
}

} // namespace

void LoggingClass::init(const char* processName) {
    m_processName = std::string(processName) + "-" + VERSION;
    socketConnectionInitialize();
}

void LoggingClass::print(Sink sink, const char* tag, Level level, const void* data, int dataLength, const char* format,
                         ...) {
    if (!isPrinted(level)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    FormattedText message(format, arguments);
    va_end(arguments);
    if (data == nullptr) {
        sink(tag, level, message.text());
        return;
    }
    const int defaultLength = 4;
    dump(sink, tag, level, message, static_cast<const unsigned char*>(data),
         dataLength > 0 ? dataLength : defaultLength);
}

void LoggingClass::printLines(const char* tag, Level level, char* text) {
    char* const end = text + std::strlen(text);
    if (end - text <= maxMessageLength) {
        smartPrintImpl(tag, level, text);
        return;
    }
    char* line = text;
    while (char* const lineEnd = std::strchr(line, '\n')) {
        printChunked(tag, level, line, lineEnd);
        line = lineEnd + 1;
    }
    printChunked(tag, level, line, end);
}

void LoggingClass::printChunked(const char* tag, Level level, char* begin, char* end) {
    char* chunk = begin;
    do {
        char* const chunkEnd = end - chunk > maxMessageLength ? chunk + maxMessageLength : end;
        const char cut = *chunkEnd;
        *chunkEnd = '\0';
        smartPrintImpl(tag, level, chunk);
        *chunkEnd = cut;
        chunk = chunkEnd;
    } while (chunk != end);
}

void LoggingClass::smartPrintImpl(const char* tag, Level level, const char* text) {
    static std::atomic<unsigned int> nextLineNumber{0};
    const unsigned int lineNumber = nextLineNumber++;
    char threadId[64];
    getThreadId(threadId, sizeof(threadId));
    printImpl(tag, level, threadId, lineNumber, text);
    sendSocketLog(text);
}

void LoggingClass::printImpl(const char* tag, Level level, const char* threadId, unsigned int lineNumber,
                             const char* text) {
    if (level == NONE) {
        return;
    }
    const LevelRoute& route = routeOf(level);
    __dlog_print(route.logId, route.priority, tag, route.format, m_processName.c_str(), threadId, lineNumber, text);
}

const char* LoggingClass::logLevelToString(Level level) {
    return routeOf(level).name;
}

void LoggingClass::getThreadId(char* buffer, unsigned long size) {
    char name[16] = "";
    prctl(PR_GET_NAME, name);
    std::snprintf(buffer, size, "%d %s", static_cast<int>(syscall(SYS_gettid)), name);
}

} // namespace DAX::Common::Logging
