#pragma once

#include <utility>

#include <boost/core/noncopyable.hpp>
#include <boost/optional.hpp>

#include "Utility/Utils/SingletonsRegister.h"

namespace DAX::Common::Utils {

// Marks one need of the registered singleton T for its own lifetime: while a guard lives, T exists. Guards on what T
// requires must be made before (an assertion). Any thread.
template <class T>
class SingletonServiceGuard : private boost::noncopyable {
public:
    SingletonServiceGuard() : SingletonServiceGuard(SingletonsRegister::defaultFactory<T>) {}

    // `factory` makes T when T does not exist yet. What it throws passes.
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
