#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "monitor/BusMessage.h"
#include "monitor/Peers.h"

namespace monitor {

// Sees the messages of the system bus that go to and come from the update service and the update core, and the changes
// of the owners of names. One thread. DBUS_SYSTEM_BUS_ADDRESS names another bus.
class BusWatch : public Processes {
public:
    // Whether the user wants the end, so that no question to the bus is worth a wait any more.
    using IsOver = std::function<bool()>;

    // Throws std::runtime_error, whose text says what to do, where there is no bus or where it allows no monitor.
    explicit BusWatch(IsOver isOver = [] { return false; });
    ~BusWatch() override;
    BusWatch(const BusWatch&) = delete;
    BusWatch& operator=(const BusWatch&) = delete;

    // Gets the message, and its bytes as they were on the bus.
    using Take = std::function<void(const BusMessage& message, std::string_view bytes)>;

    // Waits until messages come, for `time` at most, and gives all that have come to `take`, in their order. False when
    // the bus has ended the connection.
    bool wait(std::chrono::milliseconds time, const Take& take);

    // Who has the name now: a unique name; empty when nobody has it, or when the bus does not say so within 2 seconds.
    std::string ownerOf(const std::string& name);

    // Asks the bus, for 2 seconds at most, and the system.
    std::optional<Process> processOf(const std::string& connection) override;

private:
    struct Connections;
    std::unique_ptr<Connections> m_connections;
};

} // namespace monitor
