#pragma once

#include <cstdint>

#include <sys/types.h>

namespace Roundtrip {

// What the kernel says of a process.

struct Memory {
    double privateDirtyKb = 0;
    double pssKb = 0;
};

Memory memoryOf(pid_t pid);

// The time that the process has spent on a CPU, all threads of it.
std::uint64_t cpuNanosecondsOf(pid_t pid);

// Ends the process at once and waits until it is gone. It may be another process's child.
void endProcess(pid_t pid);

// This process and all that it starts from now on run on one CPU: the last of those that it may use.
void pinToOneCpu();

} // namespace Roundtrip
