#include "LibraryFaults.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>

#include <dbus/dbus.h>
#include <poll.h>
#include <pthread.h>

namespace DAX::Tests {
namespace {

thread_local std::string faultyFunction;
thread_local int longestWaitMs = 0;
thread_local std::size_t lastAllocation = 0;
thread_local std::size_t faultyAllocation = 0;
std::atomic<int> threadInits{0};
std::mutex busCallsMutex; // guards the two below
std::vector<std::string> busCalls;
std::map<std::string, std::function<void()>> hooks;

bool fails(const char* function) {
    if (faultyFunction != function) {
        return false;
    }
    faultyFunction.clear();
    return true;
}

void recordBusCall(const std::string& method, const std::string& argument) {
    std::function<void()> hook;
    {
        const std::lock_guard<std::mutex> lock(busCallsMutex);
        busCalls.push_back(method + " " + argument);
        hook = std::exchange(hooks[method], nullptr);
    }
    if (hook) {
        hook();
    }
}

void recordIfBusCall(DBusMessage* message) {
    const char* argument = nullptr;
    if (dbus_message_has_destination(message, DBUS_SERVICE_DBUS) &&
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID)) {
        recordBusCall(dbus_message_get_member(message), argument);
    }
}

} // namespace

void failNext(const std::string& function) {
    faultyFunction = function;
}

int takeLongestWaitMs() {
    return std::exchange(longestWaitMs, 0);
}

std::size_t lastAllocationSize() {
    return lastAllocation;
}

void failAllocationOf(std::size_t size) {
    faultyAllocation = size;
}

std::vector<std::string> takeBusCalls() {
    const std::lock_guard<std::mutex> lock(busCallsMutex);
    return std::exchange(busCalls, {});
}

void beforeBusCall(const std::string& method, std::function<void()> hook) {
    const std::lock_guard<std::mutex> lock(busCallsMutex);
    hooks[method] = std::move(hook);
}

int threadInitializations() {
    return threadInits;
}

} // namespace DAX::Tests

using DAX::Tests::fails;
using DAX::Tests::recordBusCall;
using DAX::Tests::recordIfBusCall;

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {

dbus_bool_t __real_dbus_threads_init_default();
dbus_bool_t __wrap_dbus_threads_init_default() {
    ++DAX::Tests::threadInits;
    return __real_dbus_threads_init_default();
}

void __real_dbus_bus_remove_match(DBusConnection*, const char*, DBusError*);
void __wrap_dbus_bus_remove_match(DBusConnection* connection, const char* rule, DBusError* error) {
    recordBusCall(error == nullptr ? "RemoveMatch" : "RemoveMatch and wait:", rule);
    __real_dbus_bus_remove_match(connection, rule, error);
}

DBusDispatchStatus __real_dbus_connection_dispatch(DBusConnection*);
DBusDispatchStatus __wrap_dbus_connection_dispatch(DBusConnection* connection) {
    if (fails("dbus_connection_dispatch")) {
        throw std::runtime_error("thrown through the library");
    }
    return __real_dbus_connection_dispatch(connection);
}

dbus_bool_t __real_dbus_connection_send(DBusConnection*, DBusMessage*, dbus_uint32_t*);
dbus_bool_t __wrap_dbus_connection_send(DBusConnection* connection, DBusMessage* message, dbus_uint32_t* serial) {
    recordIfBusCall(message);
    return !fails("dbus_connection_send") && __real_dbus_connection_send(connection, message, serial);
}

DBusMessage* __real_dbus_message_new_method_call(const char*, const char*, const char*, const char*);
DBusMessage* __wrap_dbus_message_new_method_call(const char* bus, const char* path, const char* interfaceName,
                                                 const char* method) {
    return fails("dbus_message_new_method_call")
               ? nullptr
               : __real_dbus_message_new_method_call(bus, path, interfaceName, method);
}

DBusMessage* __real_dbus_message_new_method_return(DBusMessage*);
DBusMessage* __wrap_dbus_message_new_method_return(DBusMessage* call) {
    return fails("dbus_message_new_method_return") ? nullptr : __real_dbus_message_new_method_return(call);
}

DBusMessage* __real_dbus_message_copy(const DBusMessage*);
DBusMessage* __wrap_dbus_message_copy(const DBusMessage* message) {
    return fails("dbus_message_copy") ? nullptr : __real_dbus_message_copy(message);
}

dbus_bool_t __real_dbus_message_set_destination(DBusMessage*, const char*);
dbus_bool_t __wrap_dbus_message_set_destination(DBusMessage* message, const char* destination) {
    return !fails("dbus_message_set_destination") && __real_dbus_message_set_destination(message, destination);
}

dbus_bool_t __real_dbus_message_set_reply_serial(DBusMessage*, dbus_uint32_t);
dbus_bool_t __wrap_dbus_message_set_reply_serial(DBusMessage* message, dbus_uint32_t serial) {
    return !fails("dbus_message_set_reply_serial") && __real_dbus_message_set_reply_serial(message, serial);
}

dbus_bool_t __real_dbus_message_iter_open_container(DBusMessageIter*, int, const char*, DBusMessageIter*);
dbus_bool_t __wrap_dbus_message_iter_open_container(DBusMessageIter* iterator, int type, const char* signature,
                                                    DBusMessageIter* container) {
    return !fails("dbus_message_iter_open_container") &&
           __real_dbus_message_iter_open_container(iterator, type, signature, container);
}

dbus_bool_t __real_dbus_message_iter_append_fixed_array(DBusMessageIter*, int, const void*, int);
dbus_bool_t __wrap_dbus_message_iter_append_fixed_array(DBusMessageIter* iterator, int type, const void* value,
                                                        int count) {
    return !fails("dbus_message_iter_append_fixed_array") &&
           __real_dbus_message_iter_append_fixed_array(iterator, type, value, count);
}

// The container is closed even so: releasing a message with an open container is a misuse of the library.
dbus_bool_t __real_dbus_message_iter_close_container(DBusMessageIter*, DBusMessageIter*);
dbus_bool_t __wrap_dbus_message_iter_close_container(DBusMessageIter* iterator, DBusMessageIter* container) {
    const bool failed = fails("dbus_message_iter_close_container");
    return __real_dbus_message_iter_close_container(iterator, container) && !failed;
}

int __real_poll(pollfd*, nfds_t, int);
int __wrap_poll(pollfd* descriptors, nfds_t count, int timeoutMs) {
    DAX::Tests::longestWaitMs = std::max(DAX::Tests::longestWaitMs, timeoutMs);
    return __real_poll(descriptors, count, timeoutMs);
}

void* __real__Znwm(std::size_t);
void* __wrap__Znwm(std::size_t size) {
    DAX::Tests::lastAllocation = size;
    if (size == DAX::Tests::faultyAllocation) {
        DAX::Tests::faultyAllocation = 0;
        throw std::bad_alloc();
    }
    return __real__Znwm(size);
}

int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                          void* argument) {
    return fails("pthread_create") ? EAGAIN : __real_pthread_create(thread, attributes, function, argument);
}
}
// NOLINTEND(bugprone-reserved-identifier)
