#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "support/Process.h"

namespace DAX::Tests {

// A pseudo terminal with a program at it, which leads a session of its own, as a shell does that a person has logged in
// to. What the program writes there is collected all the time. It does not outlive the object, whose destructor hangs
// up and kills it. The command's `input` and `ignoredSignals` have no meaning here. For one thread.
class Terminal {
public:
    explicit Terminal(const Command& command);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    pid_t pid() const { return m_pid; }

    // As if a person typed it: "\r" is the return key, "\x03" is Ctrl-C.
    void type(const std::string& keys);

    // Waits until the text has come since the last text that was waited for. False when it has not within the bound.
    bool waitFor(const std::string& text, std::chrono::milliseconds bound = Process::DEFAULT_BOUND);

    // Closes the terminal, as a window is closed or a line is lost.
    void hangUp();

    // Waits for the program's end. Empty when it still runs after the bound.
    std::optional<ProcessEnd> waitForEnd(std::chrono::milliseconds bound = Process::DEFAULT_BOUND);

    // Everything that has been written so far.
    const std::string& text() const { return m_text; }

private:
    void readFor(std::chrono::milliseconds time);

    pid_t m_pid = -1;
    int m_end = -1; // of the person
    std::string m_text;
    std::size_t m_waitedFor = 0;
    std::optional<ProcessEnd> m_ended;
};

} // namespace DAX::Tests
