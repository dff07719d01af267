#pragma once

#include <string>

namespace serializers::binary::detail {

template <class T>
const char* signature() {
    return __PRETTY_FUNCTION__; // "... [with T = <the type>]"
}

// The name of a type, as the compiler spells it.
template <class T>
std::string type_name() {
    const std::string text = signature<T>();
    const std::string before = "T = ";
    const std::size_t begin = text.find(before) + before.size();
    return text.substr(begin, text.rfind(']') - begin);
}

} // namespace serializers::binary::detail
