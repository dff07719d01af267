#include "Common/Logging/LoggingStream.h"

namespace DAX::Common::Logging {

const char* const SafeOstringStream::NULLPTR_STR = "[nullptr]";

LoggingStream::LoggingStream(const char* tag, LoggingClass::Level level, const char* shortFile, int line)
    : m_tag(tag), m_shortFile(shortFile), m_line(line), m_level(level) {}

LoggingStream::~LoggingStream() {
    // print() would drop it, too; this spares the copy of the text.
    if (m_level == LoggingClass::NONE) {
        return;
    }
    LoggingClass::print(LoggingClass::printLines, m_tag, m_level, nullptr, 0, "%s:%d>%s", m_shortFile, m_line,
                        m_stream.str().c_str());
}

} // namespace DAX::Common::Logging
