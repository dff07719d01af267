#pragma once

#include <future>
#include <optional>
#include <string>

#include <boost/thread/thread.hpp>

#include "FileFaults.h"

namespace DAX::Tests {

// Runs the statement on a thread that is interrupted before, and tells whether it ended by that interruption. Any other
// exception ends the test program.
template <class Statement>
bool interrupts(const Statement& statement) {
    std::promise<void> asked;
    bool interrupted = false;
    boost::thread thread([&] {
        asked.get_future().wait();
        try {
            statement();
        } catch (const boost::thread_interrupted&) {
            interrupted = true;
        }
    });
    thread.interrupt();
    asked.set_value();
    thread.join();
    return interrupted;
}

// How often the statement, run like that, called a function of the C library (see FileFaults.h) before it was
// interrupted; nothing when it was not interrupted.
template <class Statement>
std::optional<int> callsUntilInterruption(const std::string& function, const Statement& statement) {
    std::optional<int> calls;
    interrupts([&] {
        try {
            statement();
        } catch (const boost::thread_interrupted&) {
            calls = takeCalls(function);
        }
    });
    return calls;
}

} // namespace DAX::Tests
