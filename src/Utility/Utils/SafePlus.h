#pragma once

#include <type_traits>

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Common::Utils {

// The sum of two unsigned values. Throws GenericException on overflow.
template <class T>
T safePlus(T a, T b) {
    static_assert(std::is_unsigned<T>::value, "only unsigned values wrap");
    const T sum = static_cast<T>(a + b);
    if (sum < b) {
        DAX_THROW(GenericException(), errinfo_stream("numeric overflow:", a, "+", b));
    }
    return sum;
}

} // namespace DAX::Common::Utils
