#include "Common/DBUSWrapper/Implementation/CallChannel.h"

#include <thread>
#include <utility>

namespace DAX::Common::DBUSWrapper {

namespace {

// After so many reads of one connection, a few kilobytes each, the reader turns to the next one and lets a call begin.
const int READS_PER_TURN = 64;

} // namespace

// While this object lives, the connection belongs to its thread.
class CallChannel::Turn {
public:
    explicit Turn(CallChannel& channel) : m_channel(channel) {
        ++m_channel.m_callers;
        m_channel.m_mutex.lock();
        if (m_channel.isOpen()) {
            m_channel.m_idle.disarm();
        }
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() {
        --m_channel.m_callers;
        if (m_channel.isOpen()) {
            m_channel.m_idle.arm();
        }
        m_channel.m_mutex.unlock();
    }

private:
    CallChannel& m_channel;
};

CallChannel::CallChannel(DBusConnection& connection, ConnectionTraffic::OnOther onOther)
    : m_traffic(connection, std::move(onOther)), m_idle(m_traffic.descriptor(), *this) {
    const Turn first(*this); // its destructor arms the connection
}

DBUSMessageHandle CallChannel::call(DBusMessage& call, std::chrono::milliseconds timeout, DBUSError& error) {
    const auto deadline = ConnectionTraffic::Clock::now() + timeout;
    const Turn turn(*this);
    return m_traffic.call(call, deadline, error);
}

void CallChannel::readBacklog() {
    const Turn turn(*this);
    m_traffic.readBacklog();
}

void CallChannel::readIdle() {
    const std::unique_lock<std::mutex> lock = lockBetweenCalls();
    if (!lock) {
        return;
    }
    for (int i = 0; i < READS_PER_TURN && m_callers == 0; ++i) {
        if (!m_traffic.readSome()) {
            break;
        }
    }
    if (isOpen()) {
        m_idle.arm();
    }
}

// Returns unlocked when a call is running or waits for its turn; that call arms the connection at its end. When no call
// counts any more, the mutex is about to be released, so waiting for it is short.
std::unique_lock<std::mutex> CallChannel::lockBetweenCalls() {
    std::unique_lock<std::mutex> lock(m_mutex, std::defer_lock);
    while (m_callers == 0 && !lock.try_lock()) {
        std::this_thread::yield();
    }
    return lock;
}

} // namespace DAX::Common::DBUSWrapper
