#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "monitor/BusMessage.h"
#include "monitor/Peers.h"

namespace monitor {

// What readCapture() found. `messages` counts those that were read.
struct CaptureEnd {
    std::size_t messages = 0;
    std::string cutBecause; // why the file ends too early; empty when it is whole
};

// Gets each message of a capture, in its order. One that cannot be read is empty, and `reason` says why. Returns
// whether it wants the next one.
using TakeCaptured =
    std::function<bool(const std::optional<BusMessage>& message, std::int64_t time, const std::string& reason)>;

// Reads a capture of a D-Bus in the format of libpcap, as `dbus-monitor --pcap`, `busctl capture` and CaptureWriter
// write it. "-" is the standard input. Throws std::runtime_error when the file is none, or none of a D-Bus.
CaptureEnd readCapture(const std::string& path, const TakeCaptured& take);

// Whether the capture is a pipe or the like, which can be read once and may be written while it is read.
bool isStream(const std::string& path);

// The processes that a capture tells of: by the bus's answers to those who asked it. A stream
// tells of none.
class CapturedProcesses : public Processes {
public:
    // Reads the whole capture. Throws as readCapture() does.
    explicit CapturedProcesses(const std::string& path);
    ~CapturedProcesses() override;

    std::optional<Process> processOf(const std::string& connection) override;

private:
    struct Table;
    std::unique_ptr<Table> m_table;
};

// Writes a capture. The file is whole after each message.
class CaptureWriter {
public:
    // Throws std::runtime_error when the file cannot be made.
    explicit CaptureWriter(const std::string& path);
    ~CaptureWriter();
    CaptureWriter(const CaptureWriter&) = delete;
    CaptureWriter& operator=(const CaptureWriter&) = delete;

    // Throws std::runtime_error when the message cannot be written.
    void write(std::int64_t time, std::string_view message);

private:
    struct File;
    std::unique_ptr<File> m_file;
};

} // namespace monitor
