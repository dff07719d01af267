#include "daxctl/HeldLock.h"

#include <cstdio>
#include <utility>

#include "daxctl/Failure.h"

namespace daxctl {

HeldLock::HeldLock(dax::Lock lock) : m_lock(std::move(lock)) {}

HeldLock::~HeldLock() {
    release();
}

void HeldLock::noticeLoss() {
    if (m_isHeld && m_lock.isLost()) {
        lose();
    }
}

void HeldLock::lose() {
    m_isHeld = false;
    m_isLost = true;
    std::fprintf(stderr, "The lock %u is lost: the daemon that gave it has left the bus.\n", id());
}

bool HeldLock::release() {
    if (!m_isHeld) {
        return !m_isLost;
    }
    try {
        if (m_lock.release()) {
            m_isHeld = false;
        } else {
            lose();
        }
    } catch (...) {
        m_isHeld = false;
        m_isLost = true;
        std::fprintf(stderr, "The lock %u could not be released: %s\n", id(),
                     describeCurrentException().toString().c_str());
    }
    return !m_isLost;
}

} // namespace daxctl
