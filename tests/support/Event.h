#pragma once

#include <chrono>
#include <future>

namespace DAX::Tests {

// Something that happens once, on another thread.
class Event {
public:
    void happen() { m_promise.set_value(); }

    // Waits for it. False when that takes longer than the bound.
    bool wait() const { return m_future.wait_for(std::chrono::seconds(20)) == std::future_status::ready; }

    bool happened() const { return m_future.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }

private:
    std::promise<void> m_promise;
    std::shared_future<void> m_future = m_promise.get_future().share();
};

} // namespace DAX::Tests
