#include "roundtrip/ProcessFigures.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <poll.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Roundtrip {
namespace {

namespace fs = std::filesystem;

fs::path procOf(pid_t pid) {
    return fs::path("/proc") / std::to_string(pid);
}

} // namespace

Memory memoryOf(pid_t pid) {
    std::ifstream file(procOf(pid) / "smaps_rollup");
    Memory memory;
    std::string word;
    while (file >> word) {
        if (word == "Private_Dirty:") {
            file >> memory.privateDirtyKb;
        } else if (word == "Pss:") {
            file >> memory.pssKb;
        }
    }
    return memory;
}

std::uint64_t cpuNanosecondsOf(pid_t pid) {
    std::uint64_t sum = 0;
    for (const fs::directory_entry& task : fs::directory_iterator(procOf(pid) / "task")) {
        std::uint64_t onCpu = 0;
        std::ifstream(task.path() / "schedstat") >> onCpu;
        sum += onCpu;
    }
    return sum;
}

void endProcess(pid_t pid) {
    const int fd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (fd == -1) {
        return; // it has ended already
    }
    kill(pid, SIGKILL);
    pollfd ended{fd, POLLIN, 0};
    poll(&ended, 1, -1);
    close(fd);
}

void pinToOneCpu() {
    cpu_set_t cpus;
    sched_getaffinity(0, sizeof(cpus), &cpus);
    int last = CPU_SETSIZE - 1;
    while (!CPU_ISSET(last, &cpus)) {
        --last;
    }
    CPU_ZERO(&cpus);
    CPU_SET(last, &cpus);
    if (sched_setaffinity(0, sizeof(cpus), &cpus) != 0) {
        throw std::runtime_error("cannot pin this process to one CPU");
    }
}

} // namespace Roundtrip
