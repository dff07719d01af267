#include "monitor/CaptureFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include <pcap/pcap.h>
#include <sys/stat.h>

#include "monitor/BoundedMap.h"

namespace monitor {

namespace {

const int MICROSECONDS = 1000000;
const std::size_t LONGEST_NAME = 255; // of a connection; what else asks for one is no name
const std::size_t LARGEST_MESSAGE = std::size_t{128} * 1024 * 1024; // that D-Bus knows

struct ClosePcap {
    void operator()(pcap_t* file) const { pcap_close(file); }
};
using PcapFile = std::unique_ptr<pcap_t, ClosePcap>;

PcapFile open(const std::string& path) {
    char reason[PCAP_ERRBUF_SIZE] = "";
    PcapFile file(pcap_open_offline(path.c_str(), reason));
    if (!file) {
        const std::string text = reason;
        const bool hasName = text.compare(0, path.size(), path) == 0;
        throw std::runtime_error(hasName ? text : path + ": " + text);
    }
    if (pcap_datalink(file.get()) != DLT_DBUS) {
        const char* const name = pcap_datalink_val_to_name(pcap_datalink(file.get()));
        throw std::runtime_error(path + ": a capture of " + (name != nullptr ? name : "something else") +
                                 ", not of a D-Bus");
    }
    return file;
}

// A damaged capture can have any time. What people and programs get has a year of four digits.
std::int64_t timeOf(const pcap_pkthdr& header) {
    const std::int64_t year1901 = -2147483648;
    const std::int64_t year9999 = 253402300799;
    return std::clamp<std::int64_t>(header.ts.tv_sec, year1901, year9999) * MICROSECONDS +
           std::clamp<std::int64_t>(header.ts.tv_usec, 0, MICROSECONDS - 1);
}

bool takeOne(const pcap_pkthdr& header, const u_char* bytes, const TakeCaptured& take) {
    const std::int64_t time = timeOf(header);
    if (header.caplen < header.len) {
        return take(std::nullopt, time,
                    "a message of which the capture has " + std::to_string(header.caplen) + " of " +
                        std::to_string(header.len) + " bytes");
    }
    std::string reason;
    const auto message =
        parseMessage(std::string_view(reinterpret_cast<const char*>(bytes), header.caplen), time, reason);
    return take(message, time, message ? std::string() : "what is no message: " + reason);
}

} // namespace

CaptureEnd readCapture(const std::string& path, const TakeCaptured& take) {
    const PcapFile file = open(path);
    CaptureEnd end;
    pcap_pkthdr* header = nullptr;
    const u_char* bytes = nullptr;
    int result = 0;
    bool isWanted = true;
    while (isWanted && (result = pcap_next_ex(file.get(), &header, &bytes)) == 1) {
        ++end.messages;
        isWanted = takeOne(*header, bytes, take);
    }
    if (result == PCAP_ERROR) {
        end.cutBecause = pcap_geterr(file.get());
    }
    return end;
}

bool isStream(const std::string& path) {
    struct stat status {};
    return path == "-" || (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode));
}

struct CapturedProcesses::Table {
    // Of a question that waits for its answer: which connection it is about.
    BoundedMap<std::pair<std::string, std::uint32_t>, std::string> questions{4096};
    BoundedMap<std::string, std::uint32_t> pids{65536};

    void learn(const BusMessage& message) {
        if (message.type == BusMessage::Type::CALL && message.member == "GetConnectionUnixProcessID" &&
            !message.arguments.empty() && message.arguments[0].text.size() <= LONGEST_NAME) {
            questions.set({message.sender, message.serial}, message.arguments[0].text);
        } else if (message.type == BusMessage::Type::REPLY && message.sender == "org.freedesktop.DBus" &&
                   !message.arguments.empty() && message.arguments[0].type == 'u') {
            if (const std::string* name = questions.find({message.destination, message.replySerial})) {
                pids.set(*name, message.arguments[0].number);
            }
        }
    }
};

CapturedProcesses::CapturedProcesses(const std::string& path) : m_table(std::make_unique<Table>()) {
    if (isStream(path)) {
        return;
    }
    readCapture(path, [this](const std::optional<BusMessage>& message, std::int64_t, const std::string&) {
        if (message) {
            m_table->learn(*message);
        }
        return true;
    });
}

CapturedProcesses::~CapturedProcesses() = default;

std::optional<Process> CapturedProcesses::processOf(const std::string& connection) {
    const std::uint32_t* const pid = m_table->pids.find(connection);
    return pid != nullptr ? std::optional<Process>(Process{*pid, {}}) : std::nullopt;
}

struct CaptureWriter::File {
    struct CloseDumper {
        void operator()(pcap_dumper_t* writer) const { pcap_dump_close(writer); }
    };

    explicit File(const std::string& filePath)
        : path(filePath)
        , format(pcap_open_dead(DLT_DBUS, static_cast<int>(LARGEST_MESSAGE)))
        , dumper(format ? pcap_dump_open(format.get(), filePath.c_str()) : nullptr) {
        if (!dumper) {
            throw std::runtime_error(format ? pcap_geterr(format.get()) : path + ": no memory");
        }
    }

    std::string path;
    PcapFile format;
    std::unique_ptr<pcap_dumper_t, CloseDumper> dumper;
};

CaptureWriter::CaptureWriter(const std::string& path) : m_file(std::make_unique<File>(path)) {}

CaptureWriter::~CaptureWriter() = default;

void CaptureWriter::write(std::int64_t time, std::string_view message) {
    pcap_pkthdr header{};
    header.ts.tv_sec = static_cast<decltype(header.ts.tv_sec)>(time / MICROSECONDS);
    header.ts.tv_usec = static_cast<decltype(header.ts.tv_usec)>(time % MICROSECONDS);
    header.caplen = static_cast<bpf_u_int32>(message.size());
    header.len = header.caplen;
    errno = 0;
    pcap_dump(reinterpret_cast<u_char*>(m_file->dumper.get()), &header,
              reinterpret_cast<const u_char*>(message.data()));
    // A long message goes past the buffer, so that there may be nothing left that the flush could fail to write.
    if (pcap_dump_flush(m_file->dumper.get()) != 0 || std::ferror(pcap_dump_file(m_file->dumper.get())) != 0) {
        throw std::runtime_error(m_file->path + ": " + std::strerror(errno));
    }
}

} // namespace monitor
