#pragma once

#include <string>

namespace DAX::Tests {

// Replaces standard error by a pipe, or by a terminal that passes bytes on unchanged. Write less than a pipe can hold.
// text() and the destructor restore standard error.
class StandardError {
public:
    enum class Kind { PIPE, TERMINAL };

    explicit StandardError(Kind kind);
    ~StandardError();
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    // All that was written. Call it once.
    std::string text();

private:
    void putBack();

    int m_original;
    int m_reading = -1;
};

} // namespace DAX::Tests
