#pragma once

#include <cstdlib>
#include <memory>

namespace DAX::Common::Utils {

// Frees a text of a C function.
struct CTextDeleter {
    void operator()(char* text) const { std::free(text); }
};

// A text that a C function handed over; its last owner frees it with free(). Null when there is none.
using CText = std::unique_ptr<char, CTextDeleter>;

} // namespace DAX::Common::Utils
