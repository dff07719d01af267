#pragma once

#include <future>

#include <boost/thread/thread.hpp>

namespace DAX {
namespace Tests {

// Whether the statement ends as interrupted on a thread that is asked to end before it gets there. Its other exceptions
// end the test program.
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

} // namespace Tests
} // namespace DAX
