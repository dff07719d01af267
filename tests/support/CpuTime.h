#pragma once

#include <chrono>
#include <ctime>
#include <stdexcept>

#include <sys/types.h>

namespace DAX::Tests {

// How long the process has worked, in all its threads. Unlike the time on the wall, it does not pass while the machine
// is busy with others. Throws std::runtime_error when there is no such process.
inline std::chrono::nanoseconds cpuTimeOf(pid_t process) {
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0) {
        throw std::runtime_error("the process has no clock");
    }
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace DAX::Tests
