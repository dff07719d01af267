#include "Common/DBUSWrapper/Implementation/ConnectionOpening.h"

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <map>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <dbus/dbus.h>
#include <unistd.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/BlockedSignals.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

namespace {

using Clock = std::chrono::steady_clock;

const int MOST_THREADS = 8; // for one address

// How many threads open connections, for each address.
class Threads {
public:
    pid_t process() const { return m_process; }

    // False when the address has the most until the deadline.
    bool add(const std::string& address, Clock::time_point deadline) {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_changed.wait_until(lock, deadline, [&] { return m_counts[address] < MOST_THREADS; })) {
            return false;
        }
        ++m_counts[address];
        return true;
    }

    void remove(const std::string& address) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto count = m_counts.find(address);
        if (--count->second == 0) {
            m_counts.erase(count);
        }
        m_changed.notify_all();
    }

private:
    const pid_t m_process = getpid();
    std::mutex m_mutex; // guards all below
    std::condition_variable m_changed;
    std::map<std::string, int> m_counts;
};

// Those of this process. After fork() the child has none of its parent's threads, one of which may have held the mutex;
// so it begins with a count of its own. Never destroyed: a thread that stayed behind may come to its end while the
// process ends.
Threads& threads() {
    static std::atomic<Threads*> newest{nullptr};
    Threads* known = newest;
    if (known != nullptr && known->process() == getpid()) {
        return *known;
    }
    auto own = std::make_unique<Threads>();
    return newest.compare_exchange_strong(known, own.get()) ? *own.release() : *known;
}

// Belongs to the thread that connects and to the one that waits for it. Whichever goes last closes what was opened for
// nobody.
class Opening {
public:
    explicit Opening(std::string address) : m_address(std::move(address)) {}

    const std::string& address() const { return m_address; }

    void run() {
        DBUSError error;
        DBUSConnectionHandle connection(dbus_connection_open_private(m_address.c_str(), error.get()));
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_connection = std::move(connection);
        dbus_move_error(error.get(), m_error.get());
        m_isDone = true;
        m_done.notify_one();
    }

    DBUSConnectionHandle waitForIt(Clock::time_point deadline, DBUSError& error) {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_done.wait_until(lock, deadline, [this] { return m_isDone; })) {
            dbus_set_error_const(error.get(), DBUS_ERROR_TIMEOUT, "The bus does not accept a connection.");
            return nullptr;
        }
        dbus_move_error(m_error.get(), error.get());
        return std::move(m_connection);
    }

private:
    const std::string m_address;
    std::mutex m_mutex; // guards all below
    std::condition_variable m_done;
    bool m_isDone = false;
    DBUSConnectionHandle m_connection;
    DBUSError m_error;
};

void runOnAThread(Threads& threads, const std::shared_ptr<Opening>& opening) {
    sigset_t all;
    sigfillset(&all);
    const Utils::BlockedSignals blocked(all); // inherited by the thread, which must take none
    try {
        std::thread([&threads, opening] {
            opening->run();
            threads.remove(opening->address());
        }).detach();
    } catch (const std::system_error& error) {
        threads.remove(opening->address());
        DAX_THROW(DBUSWrapperExceptions::ErrorConnectingToDBUS(),
                  "A connection cannot be opened: " << Utils::errinfo_errno(error.code().value()));
    }
}

} // namespace

DBUSConnectionHandle openConnection(const std::string& address, Clock::time_point deadline, DBUSError& error) {
    dbus_threads_init_default(); // before there are several threads that would
    Threads& all = threads();
    const auto opening = std::make_shared<Opening>(address);
    if (!all.add(address, deadline)) {
        dbus_set_error_const(error.get(), DBUS_ERROR_TIMEOUT,
                             "The bus has not accepted the connections before this one.");
        return nullptr;
    }
    runOnAThread(all, opening);
    return opening->waitForIt(deadline, error);
}

} // namespace DAX::Common::DBUSWrapper
