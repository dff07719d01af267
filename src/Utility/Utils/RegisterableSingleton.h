#pragma once

#include <boost/core/noncopyable.hpp>

namespace DAX::Common::Utils {

// The base of every registered singleton. A class T is registerable when it has, besides, the static operations
// `SingletonsID getID()` and `std::list<SingletonsID> getRequirements()`: what must exist already when it is created.
class RegisterableSingleton : private boost::noncopyable {
public:
    virtual ~RegisterableSingleton() = default;

protected:
    RegisterableSingleton() = default;
};

} // namespace DAX::Common::Utils
