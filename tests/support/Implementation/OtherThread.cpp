#include "support/OtherThread.h"

#include <chrono>
#include <fstream>
#include <string>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

#include "support/WaitUntil.h"

namespace DAX::Tests {
namespace {

// Short locks, such as those of the allocator, are held for less time.
const int LOOKS = 10;

// "S" for a thread that waits.
char stateOf(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(file, line);
    const size_t nameEnd = line.rfind(')'); // the name may have blanks
    return nameEnd != std::string::npos && nameEnd + 2 < line.size() ? line[nameEnd + 2] : '?';
}

} // namespace

OtherThread::OtherThread(const std::function<void()>& function) {
    std::packaged_task<void()> call(function);
    m_returned = call.get_future();
    m_thread = std::thread([this, call = std::move(call)]() mutable {
        m_started.set_value(static_cast<pid_t>(syscall(SYS_gettid)));
        call();
    });
    m_id = m_started.get_future().get();
}

OtherThread::~OtherThread() {
    m_thread.join();
}

bool OtherThread::waitUntilItWaits() const {
    int looks = 0;
    const auto waitsLong = [&] {
        looks = waits() ? looks + 1 : 0;
        return looks == LOOKS || hasReturned();
    };
    return waitUntil(waitsLong) && !hasReturned();
}

bool OtherThread::waits() const {
    return stateOf(m_id) == 'S';
}

bool OtherThread::hasReturned() const {
    return !m_returned.valid() || m_returned.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

} // namespace DAX::Tests
