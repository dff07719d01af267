#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "dax/client.h"

namespace dax {

namespace detail {

namespace {

// The clock's time and a very long one have no sum, so that a long time is waited for in parts.
const std::chrono::milliseconds LONGEST_PART = std::chrono::hours(24);

} // namespace

class StopState {
public:
    void stop(const std::string& reason) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_isStopped) {
            m_reason = reason;
            m_isStopped = true;
            m_stopped.notify_all();
        }
    }

    bool waitFor(std::chrono::milliseconds time) {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_isStopped && time > std::chrono::milliseconds(0)) {
            const std::chrono::milliseconds part = std::min(time, LONGEST_PART);
            m_stopped.wait_for(lock, part, [this] { return m_isStopped; });
            time -= part;
        }
        return m_isStopped;
    }

    std::string reason() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_reason;
    }

private:
    std::mutex m_mutex; // guards all below
    std::condition_variable m_stopped;
    bool m_isStopped = false;
    std::string m_reason;
};

} // namespace detail

StopToken::StopToken() noexcept = default;
StopToken::StopToken(std::shared_ptr<detail::StopState> state) noexcept : m_state(std::move(state)) {}
StopToken::StopToken(const StopToken&) noexcept = default;
StopToken& StopToken::operator=(const StopToken&) noexcept = default;
StopToken::~StopToken() = default;

bool StopToken::isStopped() const noexcept {
    return m_state != nullptr && m_state->waitFor(std::chrono::milliseconds(0));
}

bool StopToken::waitFor(std::chrono::milliseconds time) const {
    if (m_state != nullptr) {
        return m_state->waitFor(time);
    }
    std::this_thread::sleep_for(time);
    return false;
}

std::string StopToken::reason() const {
    return m_state != nullptr ? m_state->reason() : std::string();
}

StopSource::StopSource() : m_state(std::make_shared<detail::StopState>()) {}
StopSource::StopSource(const StopSource&) noexcept = default;
StopSource& StopSource::operator=(const StopSource&) noexcept = default;
StopSource::~StopSource() = default;

void StopSource::requestStop(const std::string& reason) {
    m_state->stop(reason);
}

StopToken StopSource::token() const noexcept {
    return StopToken(m_state);
}

} // namespace dax
