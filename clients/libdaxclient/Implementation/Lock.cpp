#include "libdaxclient/Implementation/LockCore.h"
#include "libdaxclient/Implementation/MovedFrom.h"

namespace dax {

Lock::Lock(std::unique_ptr<detail::LockCore> core) noexcept : m_core(std::move(core)) {}
Lock::Lock(Lock&&) noexcept = default;
Lock& Lock::operator=(Lock&&) noexcept = default;
Lock::~Lock() = default;

detail::LockCore& Lock::core() const {
    return detail::insideOf(m_core);
}

LockId Lock::id() const {
    return core().id();
}

bool Lock::isLost() {
    return core().isLost();
}

bool Lock::release() {
    return core().release();
}

LockId Lock::detach() {
    return core().detach();
}

} // namespace dax
