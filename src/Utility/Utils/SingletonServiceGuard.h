#pragma once

#include <utility>

#include <boost/core/noncopyable.hpp>
#include <boost/optional.hpp>

#include "Utility/Utils/SingletonsRegister.h"

namespace DAX::Common::Utils {

// One need of the registered singleton T, from construction to destruction: while a guard lives, T exists. Guards on
// what T requires must have been made before.
template <class T>
class SingletonServiceGuard : private boost::noncopyable {
public:
    SingletonServiceGuard() : SingletonServiceGuard(SingletonsRegister::defaultFactory<T>) {}

    // The factory makes T when it does not exist yet.
    explicit SingletonServiceGuard(SingletonsRegister::Factory factory) : m_id(T::getID()) {
        SingletonsRegister::getSingletonsRegister().markNeeded<T>(*m_id, std::move(factory));
    }

    ~SingletonServiceGuard() {
        if (m_id) {
            SingletonsRegister::getSingletonsRegister().unmarkNeeded(*m_id);
        }
    }

private:
    const boost::optional<SingletonsID> m_id;
};

} // namespace DAX::Common::Utils
