#pragma once

#include <cstdio>
#include <iostream>

#include <fcntl.h>
#include <unistd.h>

namespace DAX::Tests {

// While it lives, standard output is a disk that is full.
class LostOutput {
public:
    LostOutput() {
        std::fflush(stdout);
        const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        ::dup2(full, STDOUT_FILENO);
        ::close(full);
    }

    ~LostOutput() {
        std::fflush(stdout);
        ::dup2(m_original, STDOUT_FILENO);
        ::close(m_original);
        std::clearerr(stdout);
        std::cout.clear();
    }
    LostOutput(const LostOutput&) = delete;
    LostOutput& operator=(const LostOutput&) = delete;

private:
    const int m_original = ::dup(STDOUT_FILENO);
};

} // namespace DAX::Tests
