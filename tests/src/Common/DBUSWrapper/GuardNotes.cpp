#include "GuardNotes.h"

#include <atomic>
#include <map>
#include <mutex>
#include <string>

#include <dbus/dbus.h>

#include "Common/Utils/SoftWatchdog.h"
#include "support/FakeKovan.h"

using DAX::Common::Utils::SoftWatchdog;

namespace {

std::atomic<bool> areTaken{false};
std::mutex namesMutex; // guards names
std::map<const SoftWatchdog*, std::string> names;
thread_local bool isLoop = false; // of all threads that wait for messages, only the loop makes watchdogs

void keepName(const SoftWatchdog* watchdog, const std::string& name) {
    const std::lock_guard<std::mutex> lock(namesMutex);
    names[watchdog] = name.substr(0, name.find(' '));
}

std::string nameOf(const SoftWatchdog* watchdog) {
    const std::lock_guard<std::mutex> lock(namesMutex);
    return names[watchdog];
}

void note(const std::string& what) {
    if (areTaken) {
        FakeKovan::note("loop " + what);
    }
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {

void __real__ZN3DAX6Common5Utils12SoftWatchdogC1ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEii(
    SoftWatchdog* watchdog, const std::string& name, int warnAfterSeconds, int killAfterSeconds);
void __wrap__ZN3DAX6Common5Utils12SoftWatchdogC1ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEii(
    SoftWatchdog* watchdog, const std::string& name, int warnAfterSeconds, int killAfterSeconds) {
    isLoop = true;
    keepName(watchdog, name);
    __real__ZN3DAX6Common5Utils12SoftWatchdogC1ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEii(
        watchdog, name, warnAfterSeconds, killAfterSeconds);
}

void __real__ZN3DAX6Common5Utils12SoftWatchdog3armEv(SoftWatchdog* watchdog);
void __wrap__ZN3DAX6Common5Utils12SoftWatchdog3armEv(SoftWatchdog* watchdog) {
    note("arm " + nameOf(watchdog));
    __real__ZN3DAX6Common5Utils12SoftWatchdog3armEv(watchdog);
}

void __real__ZN3DAX6Common5Utils12SoftWatchdog6disarmEv(SoftWatchdog* watchdog);
void __wrap__ZN3DAX6Common5Utils12SoftWatchdog6disarmEv(SoftWatchdog* watchdog) {
    note("disarm " + nameOf(watchdog));
    __real__ZN3DAX6Common5Utils12SoftWatchdog6disarmEv(watchdog);
}

dbus_bool_t __real_dbus_connection_read_write(DBusConnection* connection, int timeoutMs);
dbus_bool_t __wrap_dbus_connection_read_write(DBusConnection* connection, int timeoutMs) {
    if (isLoop) {
        note("pass");
    }
    return __real_dbus_connection_read_write(connection, timeoutMs);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace DAX::Tests {

GuardNotes::GuardNotes() {
    isLoop = false; // a test before this one may have run a loop on this thread
    areTaken = true;
}

GuardNotes::~GuardNotes() {
    areTaken = false;
}

} // namespace DAX::Tests
