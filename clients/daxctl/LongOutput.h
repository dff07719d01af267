#pragma once

#include <cstddef>

namespace daxctl {

// The standard output of a command that writes for long, until somebody stops it. While it lives, a reader who goes
// sends no signal, so that the command can end in good order.
class LongOutput {
public:
    LongOutput();
    ~LongOutput();
    LongOutput(const LongOutput&) = delete;
    LongOutput& operator=(const LongOutput&) = delete;

    // Writes out what is buffered. False when nobody reads it any more, as behind `head`. Throws Refusal when it cannot
    // be written.
    bool flush();

    // Whether colours are welcome: on a terminal that has them, unless NO_COLOR is set.
    static bool isColourful();

    // How many letters a line of the terminal has now; 0 when the output is no terminal.
    static std::size_t width();

private:
    void (*m_before)(int);
};

} // namespace daxctl
