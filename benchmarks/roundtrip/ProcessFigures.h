#pragma once

#include <cstdint>

#include <sys/types.h>

namespace Roundtrip {

// The kernel's figures for a process.

struct Memory {
    double privateDirtyKb = 0;
    double pssKb = 0;
};

Memory memoryOf(pid_t pid);

// The time that all threads of the process together have spent on a CPU.
std::uint64_t cpuNanosecondsOf(pid_t pid);

// Ends the process at once and waits until it is gone. It need not be a child of this process.
void endProcess(pid_t pid);

// From now on this process, and all that it starts, run on one CPU: the last of those that it may use.
void pinToOneCpu();

} // namespace Roundtrip
