#pragma once

#include <cerrno>

// The stubs stand in for the device's own libraries where there is no device: each function answers that it is not
// supported, in its own terms, and notes that it was called. Two variables of the environment, which are looked at anew
// at each call:
//
// - KOVAN_STUBS_CALLS: the file to which each call appends the function's name, as a line by one write. Without it,
// calls
//   are not noted.
// - KOVAN_STUBS_WORKING: the functions that work, as words with blanks between them. "*" is all, "-NAME" is none of
// them,
//   and the last word that fits a function decides. One that works takes everything and keeps nothing: it reports
//   success, with 0, an empty text or an empty list for a value.
namespace KovanStubs {

// A failure, of a function whose header names no number for it.
constexpr int NOT_SUPPORTED = -EOPNOTSUPP;

// Notes the call of a function, and returns whether the function is to work. Leaves errno as it was. Any thread may
// call.
bool works(const char* function) noexcept;

// The same for a function that only answers with a number.
inline int answer(const char* function, int success = 0, int failure = NOT_SUPPORTED) noexcept {
    return works(function) ? success : failure;
}

// The same for one that fills in a value, which a failure leaves as it was.
template <class Value>
int answer(const char* function, Value* value, Value set, int success = 0, int failure = NOT_SUPPORTED) noexcept {
    if (!works(function)) {
        return failure;
    }
    *value = set;
    return success;
}

} // namespace KovanStubs
