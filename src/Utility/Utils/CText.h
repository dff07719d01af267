#pragma once

#include <cstdlib>
#include <memory>

namespace DAX::Common::Utils {

struct CTextDeleter {
    void operator()(char* text) const { std::free(text); }
};

// A text that a C function handed over, freed with free() by its last owner. Null when there is none.
using CText = std::unique_ptr<char, CTextDeleter>;

} // namespace DAX::Common::Utils
