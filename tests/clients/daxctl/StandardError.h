#pragma once

#include <string>

namespace DAX::Tests {

// Puts a pipe, or a terminal that passes bytes on as they are, in the place of standard error, for less than a pipe can
// hold. Standard error is back when text() was called, or when the object goes.
class StandardError {
public:
    enum class Kind { PIPE, TERMINAL };

    explicit StandardError(Kind kind);
    ~StandardError();
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    // All that was written. Once.
    std::string text();

private:
    void putBack();

    int m_original;
    int m_reading = -1;
};

} // namespace DAX::Tests
