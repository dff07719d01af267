#pragma once

#include <string>

namespace KovanHost {

// Where __dlog_print writes, and how.
//
// The environment variable KOVAN_DLOG chooses: "journal", "stderr", "none", or the path of a file. When it is unset or
// empty, messages go to the systemd journal if its socket exists, else to standard error. A journal without its socket,
// or a file that cannot be opened, is reported once on standard error, which then takes its place.
//
// In a file and on standard error a message is one line, written by one write:
//     2026-11-21T09:30:00.125Z I org.kovan.tv.dax.DAX: text
// with the time in UTC, a letter for the priority (V, D, I, W, E, F), the tag and the text. In the text, a line end is
// written as "\n" and a carriage return as "\r". The journal gets the text unchanged, the priority as PRIORITY and the
// tag as SYSLOG_IDENTIFIER.
class DlogSink {
public:
    enum class Kind { NONE, JOURNAL, DESCRIPTOR };

    // The process's sink. The environment is read at the first call.
    static const DlogSink& get();

    // The sink for a value of KOVAN_DLOG; null means that it is unset. `journalSocket` is the path of the journal's
    // socket.
    static DlogSink choose(const char* value, const char* journalSocket);

    Kind kind() const { return m_kind; }
    int descriptor() const { return m_descriptor; }

    // False when the message was not taken. Any thread may call.
    bool write(int priority, const char* tag, const char* text) const;

private:
    DlogSink(Kind kind, int descriptor) : m_kind(kind), m_descriptor(descriptor) {}

    Kind m_kind;
    int m_descriptor;
};

// A line for a file or for standard error, without its time.
std::string dlogLine(int priority, const char* tag, const char* text);

// The syslog level for a dlog priority.
int journalPriority(int priority);

} // namespace KovanHost
