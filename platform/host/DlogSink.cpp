#include "DlogSink.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include "AppendFile.h"
#include "Timestamp.h"

namespace KovanHost {

namespace {

const char* const JOURNAL_SOCKET = "/run/systemd/journal/socket";

bool isThere(const char* path) {
    return access(path, F_OK) == 0;
}

void tellOfFallback(const std::string& place, const char* reason) {
    appendLine(STDERR_FILENO, "KOVAN_DLOG: cannot write to " + place + ": " + reason + "; writing to standard error");
}

iovec field(const std::string& text) {
    return {const_cast<char*>(text.data()), text.size()};
}

bool writeToJournal(int priority, const char* tag, const char* text) {
    const std::string message = std::string("MESSAGE=") + text;
    const std::string level = "PRIORITY=" + std::to_string(journalPriority(priority));
    const std::string identifier = std::string("SYSLOG_IDENTIFIER=") + tag;
    const iovec fields[] = {field(message), field(level), field(identifier)};
    return sd_journal_sendv(fields, 3) >= 0;
}

} // namespace

const DlogSink& DlogSink::get() {
    static const DlogSink sink = choose(std::getenv("KOVAN_DLOG"), JOURNAL_SOCKET);
    return sink;
}

DlogSink DlogSink::choose(const char* value, const char* journalSocket) {
    const std::string choice = value == nullptr ? "" : value;
    const DlogSink standardError(Kind::DESCRIPTOR, STDERR_FILENO);
    if (choice == "none") {
        return {Kind::NONE, -1};
    }
    if (choice == "stderr") {
        return standardError;
    }
    if (choice.empty() || choice == "journal") {
        if (isThere(journalSocket)) {
            return {Kind::JOURNAL, -1};
        }
        if (!choice.empty()) {
            tellOfFallback("the journal", std::strerror(errno));
        }
        return standardError;
    }
    const int file = openForAppending(choice);
    if (file < 0) {
        tellOfFallback(choice, std::strerror(errno));
        return standardError;
    }
    return {Kind::DESCRIPTOR, file};
}

bool DlogSink::write(int priority, const char* tag, const char* text) const {
    switch (m_kind) {
    case Kind::NONE:
        return true;
    case Kind::JOURNAL:
        return writeToJournal(priority, tag, text);
    case Kind::DESCRIPTOR:
        break;
    }
    return appendLine(m_descriptor, utcTimestamp() + " " + dlogLine(priority, tag, text));
}

std::string dlogLine(int priority, const char* tag, const char* text) {
    static const char LETTERS[] = "??VDIWEF"; // dlog's priorities begin at 2
    std::string line(1, priority >= 0 && priority <= 7 ? LETTERS[priority] : '?');
    line.append(" ").append(tag).append(": ");
    for (; *text != '\0'; ++text) {
        switch (*text) {
        case '\n':
            line += "\\n";
            break;
        case '\r':
            line += "\\r";
            break;
        default:
            line += *text;
        }
    }
    return line;
}

int journalPriority(int priority) {
    switch (priority) {
    case 4:
        return LOG_INFO;
    case 5:
        return LOG_WARNING;
    case 6:
        return LOG_ERR;
    case 7:
        return LOG_CRIT;
    default:
        return LOG_DEBUG;
    }
}

} // namespace KovanHost
