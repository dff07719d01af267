#pragma once

#include "Common/Logging/Logging.h"
#include "Common/Logging/SafeOstringStream.h"

namespace DAX::Common::Logging {

// Collects one log line, and prints it when it is destroyed. One thread.
class LoggingStream {
public:
    // `tag` and `shortFile` are borrowed and must outlive the object.
    LoggingStream(const char* tag, LoggingClass::Level level, const char* shortFile, int line);
    LoggingStream(const LoggingStream&) = delete;
    LoggingStream& operator=(const LoggingStream&) = delete;
    ~LoggingStream();

    SafeOstringStream& getStream() { return m_stream; }

private:
    const char* m_tag;
    const char* m_shortFile;
    int m_line;
    LoggingClass::Level m_level;
    SafeOstringStream m_stream;
};

} // namespace DAX::Common::Logging

// DAX_LOG(INF) << "text" << value; the values are not evaluated when the level is never printed.
#define DAX_LOG(LEVEL)                                                                                                 \
    if (!::DAX::Common::Logging::LoggingClass::isPrinted(::DAX::Common::Logging::LoggingClass::LEVEL)) {               \
    } else                                                                                                             \
        ::DAX::Common::Logging::LoggingStream(::DAX::Common::Logging::LOG_TAG,                                         \
                                              ::DAX::Common::Logging::LoggingClass::LEVEL,                             \
                                              ::DAX::Common::Logging::LoggingClass::shortenPath(__FILE__), __LINE__)   \
            .getStream()
