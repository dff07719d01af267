#include "Common/DBUSWrapper/Implementation/ConnectionOpening.h"

#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <dbus/dbus.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/BlockedSignals.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

namespace {

using Clock = std::chrono::steady_clock;

const int MOST_THREADS = 8;

// How many threads may be made.
class Places {
public:
    // False when none comes free until the deadline.
    bool take(Clock::time_point deadline) {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_changed.wait_until(lock, deadline, [this] { return m_free > 0; })) {
            return false;
        }
        --m_free;
        return true;
    }

    void giveBack() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_free;
        m_changed.notify_one();
    }

private:
    std::mutex m_mutex; // guards all below
    std::condition_variable m_changed;
    int m_free = MOST_THREADS;
};

// Never destroyed: a thread that stayed behind may come to its end while the process ends.
Places& places() {
    static Places* const all = new Places;
    return *all;
}

// Belongs to the thread that connects and to the one that waits for it. Whichever goes last closes what was opened for
// nobody.
class Opening {
public:
    explicit Opening(std::string address) : m_address(std::move(address)) {}

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

void runOnAThread(const std::shared_ptr<Opening>& opening) {
    sigset_t all;
    sigfillset(&all);
    const Utils::BlockedSignals blocked(all); // inherited by the thread, which must take none
    try {
        std::thread([opening] {
            opening->run();
            places().giveBack();
        }).detach();
    } catch (const std::system_error& error) {
        places().giveBack();
        DAX_THROW(DBUSWrapperExceptions::ErrorConnectingToDBUS(),
                  "A connection cannot be opened: " << Utils::errinfo_errno(error.code().value()));
    }
}

} // namespace

DBUSConnectionHandle openConnection(const std::string& address, Clock::time_point deadline, DBUSError& error) {
    if (!places().take(deadline)) {
        dbus_set_error_const(error.get(), DBUS_ERROR_TIMEOUT,
                             "The bus has not accepted the connections before this one.");
        return nullptr;
    }
    const auto opening = std::make_shared<Opening>(address);
    runOnAThread(opening);
    return opening->waitForIt(deadline, error);
}

} // namespace DAX::Common::DBUSWrapper
