#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <typeinfo>

#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::Utils {

// The object's debugName(), or, without one, the name of its static type and its address.
template <class T>
std::string getDebugName(const T& object) {
    if (const auto* const named = dynamic_cast<const IDebugName*>(&object)) {
        return named->debugName();
    }
    std::ostringstream text;
    text << typeid(T).name() << "=0x" << std::hex << reinterpret_cast<std::uintptr_t>(&object);
    return text.str();
}

} // namespace DAX::Common::Utils
