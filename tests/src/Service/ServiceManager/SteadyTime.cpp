#include "SteadyTime.h"

#include <atomic>

using std::chrono::steady_clock;

namespace {

const steady_clock::rep RUNNING = -1;
std::atomic<steady_clock::rep> standing{RUNNING};

} // namespace

// The linker's option --wrap makes the two of steady_clock::now.
steady_clock::time_point realNow() __asm__("__real__ZNSt6chrono3_V212steady_clock3nowEv");
steady_clock::time_point wrappedNow() __asm__("__wrap__ZNSt6chrono3_V212steady_clock3nowEv");

steady_clock::time_point wrappedNow() {
    const steady_clock::rep time = standing;
    return time == RUNNING ? realNow() : steady_clock::time_point(steady_clock::duration(time));
}

namespace DAX::Tests {

SteadyTime::SteadyTime() {
    standing = steady_clock::now().time_since_epoch().count();
}

SteadyTime::~SteadyTime() {
    standing = RUNNING;
}

void SteadyTime::pass(std::chrono::milliseconds time) {
    standing += steady_clock::duration(time).count();
}

} // namespace DAX::Tests
