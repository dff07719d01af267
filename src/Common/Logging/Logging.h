#pragma once

#include <atomic>
#include <string>

namespace DAX::Common::Logging {

// The tag of every line of this system.
extern const char* const LOG_TAG;

// All logging of the process, to the device's system log and, for what must be seen when the system is dying, to the
// console. Any thread may log; `init` comes first, from the main thread.
class LoggingClass {
public:
    enum Level { NONE = 0, VERBOSE = 1, DBG = 2, INF = 3, WRN = 4, ERR = 5, FTL = 6 };

    using Sink = void (*)(const char* tag, Level level, char* text);

    // The longest text that goes to the system log as one line, in bytes.
    static const int maxMessageLength = 768;

    // Sets the name that every line carries: `processName` and the program's version.
    static void init(const char* processName);

    // Lines of the other levels never come out, so their text need not be made.
    static constexpr bool isPrinted(Level level) { return level != NONE && level != VERBOSE; }

    // The part behind the last "/", or the whole text when it has none.
    static constexpr const char* shortenPath(const char* path) {
        const char* shortened = path;
        for (const char* current = path; *current != '\0'; ++current) {
            if (*current == '/') {
                shortened = current + 1;
            }
        }
        return shortened;
    }

    // Formats like printf and hands the text to `sink`. With `data`, the text is followed by a hexadecimal dump, one
    // call of the sink for each row of up to 16 bytes; a `dataLength` of zero or less is taken as 4.
    static void print(Sink sink, const char* tag, Level level, const void* data, int dataLength, const char* format,
                      ...) __attribute__((format(printf, 6, 7)));

    // The sink of the system log. Cuts a text of more than `maxMessageLength` bytes at its line ends and then in
    // pieces.
    static void printLines(const char* tag, Level level, char* text);

    // The sink of the console: "/dev/console", or standard error when that cannot be opened.
    static void printDirect(const char* tag, Level level, char* text);

    static const char* logLevelToString(Level level);

    // Writes "<kernel thread id> <thread name>" to `buffer`.
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
