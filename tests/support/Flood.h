#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <utility>

#include "support/RawPeer.h"
#include "support/WaitUntil.h"

namespace DAX::Tests {

// A signal to one connection, with `size` bytes.
inline RawMessage signalTo(const std::string& destination, std::size_t size = 0) {
    RawMessage signal(dbus_message_new_signal("/org/kovan/test/remote", "org.kovan.test.iremote", "method"));
    dbus_message_set_destination(signal.get(), destination.c_str());
    appendBytes(*signal, std::string(size, 'x'));
    return signal;
}

// Sends more signals than libdbus holds for a connection that nobody reads. The bus has taken all of them when this
// returns.
inline void sendGreatSignals(RawPeer& peer, const std::string& destination) {
    for (int i = 0; i < 134; ++i) {
        peer.send(*signalTo(destination, 1000000));
    }
}

// Sends small signals to one connection while the object lives, as many as the bus takes.
class Flood {
public:
    explicit Flood(const std::string& destination, RawPeer sender = RawPeer())
        : m_peer(std::move(sender)), m_thread([this, destination] { run(destination); }) {}
    ~Flood() {
        m_stop = true;
        m_thread.join();
    }
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;

    // Waits until the bus has taken this many. False when that takes longer than the usual bound.
    bool waitFor(int count) const {
        return waitUntil([this, count] { return m_count >= count; });
    }

private:
    void run(const std::string& destination) {
        while (!m_stop) {
            for (int i = 0; i < 64; ++i) {
                dbus_connection_send(m_peer.connection(), signalTo(destination).get(), nullptr);
            }
            dbus_connection_flush(m_peer.connection());
            m_count += 64;
        }
    }

    RawPeer m_peer;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_count{0};
    std::thread m_thread;
};

} // namespace DAX::Tests
