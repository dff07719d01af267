#pragma once

#include <boost/core/noncopyable.hpp>

namespace DAX::Common::Utils {

// The base of every registered singleton. A registerable class T also needs the static operations `SingletonsID
// getID()` and `std::list<SingletonsID> getRequirements()`; the latter names the singletons that must exist before T.
class RegisterableSingleton : private boost::noncopyable {
public:
    virtual ~RegisterableSingleton() = default;

protected:
    RegisterableSingleton() = default;
};

} // namespace DAX::Common::Utils
