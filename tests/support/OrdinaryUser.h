#pragma once

#include <stdexcept>

#include <unistd.h>

namespace DAX::Tests {

// The process has no rights beyond those of an ordinary user while the object lives, so that the modes of files count
// for it; nothing changes when it is one already.
class OrdinaryUser {
public:
    OrdinaryUser() : m_before(::geteuid()) {
        if (m_before == 0 && ::seteuid(65534) != 0) {
            throw std::runtime_error("cannot give up the rights of the superuser");
        }
    }
    ~OrdinaryUser() {
        if (::geteuid() != m_before && ::seteuid(m_before) != 0) {
            ::_exit(255);
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    const uid_t m_before;
};

} // namespace DAX::Tests
