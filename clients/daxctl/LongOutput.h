#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "daxctl/Interruption.h"

namespace daxctl {

// The standard output of a command that writes for long, until somebody stops it. While it lives, a reader who goes
// sends no signal, so that the command can end in good order. A reader who stands still is waited for, until the end is
// asked for: then it is given up when it takes nothing for PATIENCE, and is as one who has gone.
class LongOutput {
public:
    static constexpr std::chrono::milliseconds PATIENCE{300};

    // How long ago the end was asked for; 0 while it was not. EndRequest knows it where there is one.
    using EndAge = std::function<std::chrono::milliseconds()>;

    LongOutput();
    explicit LongOutput(EndAge endAge);
    ~LongOutput();
    LongOutput(const LongOutput&) = delete;
    LongOutput& operator=(const LongOutput&) = delete;

    // Where to write. It fails when nobody reads any more, and when it cannot be written.
    std::ostream& stream() { return m_stream; }

    // Writes out what is buffered. False when nobody reads it any more, as behind `head`. Throws Refusal when it cannot
    // be written.
    bool flush();

    // Whether colours are welcome: on a terminal that has them, unless NO_COLOR is set.
    static bool isColourful();

    // How many letters a line of the terminal has now; 0 when the output is no terminal.
    static std::size_t width();

private:
    class Buffer : public std::streambuf {
    public:
        explicit Buffer(EndAge endAge);

        bool isGivenUp = false;
        int error = 0; // of the write that failed

    protected:
        int_type overflow(int_type letter) override;
        int sync() override;

    private:
        bool writeOut();
        void restart();

        const EndAge m_endAge;
        std::vector<char> m_bytes;
    };

    void (*m_before)(int);
    Buffer m_buffer;
    std::ostream m_stream{&m_buffer};
};

// Writes the text to standard output while the signals are held back. False when nobody reads it, also when the reader
// stands still at an interruption, which is told on standard error. Throws Refusal when it cannot be written.
bool printUnlessInterrupted(const std::string& text, Interruption& interruption);

} // namespace daxctl
