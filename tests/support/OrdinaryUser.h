#pragma once

#include <stdexcept>

#include <unistd.h>

namespace DAX::Tests {

// While the object lives, the process has only the rights of an ordinary user, so that the modes of files apply to it.
// Nothing changes when it has no other rights anyway.
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
