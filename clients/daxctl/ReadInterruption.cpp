#include "daxctl/ReadInterruption.h"

#include <iterator>

namespace daxctl {

namespace {

volatile std::sig_atomic_t isRequested = 0;

} // namespace

ReadInterruption::ReadInterruption() {
    isRequested = 0;
    for (std::size_t i = 0; i < std::size(SIGNALS); ++i) {
        sigaction(SIGNALS[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler != SIG_IGN) {
            struct sigaction action {}; // without SA_RESTART
            action.sa_handler = [](int) { isRequested = 1; };
            sigaction(SIGNALS[i], &action, nullptr);
        }
    }
}

ReadInterruption::~ReadInterruption() {
    for (std::size_t i = 0; i < std::size(SIGNALS); ++i) {
        sigaction(SIGNALS[i], &m_before[i], nullptr);
    }
}

bool ReadInterruption::requested() {
    return isRequested != 0;
}

} // namespace daxctl
