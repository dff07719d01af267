#pragma once

#include <atomic>
#include <string>

namespace DAX::Common::Logging {

// The tag of every line of this system.
extern const char* const LOG_TAG;

// All logging of the process: to the device's system log and, for what must be seen when the system is dying, to the
// console. Any thread may log, and nothing here throws for lack of memory, except init(). Call init() first, on the
// main thread; earlier lines carry an empty name.
class LoggingClass {
public:
    enum Level { NONE = 0, VERBOSE = 1, DBG = 2, INF = 3, WRN = 4, ERR = 5, FTL = 6 };

    // Where a formatted text goes. It may change the text during the call.
    using Sink = void (*)(const char* tag, Level level, char* text);

    // The longest text that goes to the system log as one line, in bytes.
    static const int maxMessageLength = 768;

    // Sets the name that every line carries: `processName` followed by the version of the program.
    static void init(const char* processName);

    // Whether lines of this level are printed. For the others, no text need be made.
    static constexpr bool isPrinted(Level level) { return level != NONE && level != VERBOSE; }

    // The part after the last "/", or the whole text without one.
    static constexpr const char* shortenPath(const char* path) {
        const char* shortened = path;
        for (const char* current = path; *current != '\0'; ++current) {
            if (*current == '/') {
                shortened = current + 1;
            }
        }
        return shortened;
    }

    // Formats like printf and passes the text to `sink`. A text of more than 16383 bytes is cut, or of more than 1023
    // without memory. With `data`, a hexadecimal dump follows the text, with one call of the sink for each row of up to
    // 16 bytes; a `dataLength` of 0 or less means 4.
    static void print(Sink sink, const char* tag, Level level, const void* data, int dataLength, const char* format,
                      ...) __attribute__((format(printf, 6, 7)));

    // The sink for the system log. Splits a text of more than `maxMessageLength` bytes at its line ends, and longer
    // lines into pieces.
    static void printLines(const char* tag, Level level, char* text);

    // The sink for the console: "/dev/console", or standard error when that cannot be opened. Redirects the standard
    // output of the process to the console, and blocks for 100 ms so that the line gets out.
    static void printDirect(const char* tag, Level level, char* text);

    // "VERBOSE" to "FTL"; "UNKNOWN LEVEL" for every other value, also NONE.
    static const char* logLevelToString(Level level);

    // Writes "<kernel thread id> <thread name>" of the calling thread to `buffer`, cut to `size` bytes with the
    // terminator.
    static void getThreadId(char* buffer, unsigned long size);

private:
    static void printChunked(const char* tag, Level level, char* begin, char* end);
    static void smartPrintImpl(const char* tag, Level level, const char* text);
    static void printImpl(const char* tag, Level level, const char* threadId, unsigned int lineNumber,
                          const char* text);

    static void socketConnectionInitialize();
    static int socketSendData(const char* data, int length);
    static int socketRecvData(char* data, int length);
    static void sendSocketLog(const char* text);

    static std::string m_processName;
    static bool m_bSocketInitialized;
};

} // namespace DAX::Common::Logging
