#pragma once

#include <string>

namespace DAX::Tests {

// Every step takes almost no time.
const char* const QUICK = "[search]\nseconds=0.01\n[installation]\nseconds=0.01\n[finalization]\nseconds=0.01\n";

// The quick scenario with one fault.
inline std::string withFault(const std::string& method, const std::string& fault) {
    return QUICK + ("[fault " + method + "]\n") + fault + "\n";
}

} // namespace DAX::Tests
