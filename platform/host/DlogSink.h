#pragma once

#include <string>

namespace KovanHost {

// Where __dlog_print writes, and how.
//
// The environment variable KOVAN_DLOG chooses: "journal", "stderr", "none", or the path of a file. Unset or empty: the
// systemd journal when its socket is there, else standard error. A journal without its socket, or a file that cannot be
// opened, is told once on standard error, which is then written to instead.
//
// In a file and on standard error a message is one line, written by one write:
//     2026-11-21T09:30:00.125Z I org.kovan.tv.dax.DAX: text
// with the time in UTC, a letter for the priority (V, D, I, W, E, F), the tag and the text, in which a line end stands
// as
// "\n" and a carriage return as "\r". The journal gets the text as it is, the priority as PRIORITY and the tag as
// SYSLOG_IDENTIFIER.
class DlogSink {
public:
    enum class Kind { NONE, JOURNAL, DESCRIPTOR };

    // The process's sink; the environment is looked up at the first call.
    static const DlogSink& get();

    // The choice for a value of KOVAN_DLOG (null: unset). `journalSocket` is the path of the journal's socket.
    static DlogSink choose(const char* value, const char* journalSocket);

    Kind kind() const { return m_kind; }
    int descriptor() const { return m_descriptor; }

    // False: the message was not taken. Any thread may call.
    bool write(int priority, const char* tag, const char* text) const;

private:
    DlogSink(Kind kind, int descriptor) : m_kind(kind), m_descriptor(descriptor) {}

    Kind m_kind;
    int m_descriptor;
};

// The line of a file or of standard error, without its time.
std::string dlogLine(int priority, const char* tag, const char* text);

// syslog's level for a dlog priority.
int journalPriority(int priority);

} // namespace KovanHost
