#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <ostream>
#include <streambuf>
#include <vector>

namespace daxctl {

// The standard output of a command that writes for long, until somebody stops it. While it lives, a reader who goes
// sends no signal, so that the command can end in good order. A reader who stands still is waited for, until the end is
// asked for (EndRequest): then it is given up when it takes nothing for PATIENCE, and is as one who has gone.
class LongOutput {
public:
    static constexpr std::chrono::milliseconds PATIENCE{300};

    LongOutput();
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
        Buffer();

        bool isGivenUp = false;
        int error = 0; // of the write that failed

    protected:
        int_type overflow(int_type letter) override;
        int sync() override;

    private:
        bool writeOut();
        void restart();

        std::vector<char> m_bytes;
    };

    void (*m_before)(int);
    Buffer m_buffer;
    std::ostream m_stream{&m_buffer};
};

} // namespace daxctl
