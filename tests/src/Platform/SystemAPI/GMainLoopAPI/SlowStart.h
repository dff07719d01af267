#pragma once

#include <functional>

// Replaces functions of GLib in this test program. While an object lives, a loop does not seem to run for the first
// `looks` looks. Each look is recorded in the journal ("look"), and a pause is recorded ("pause 100000", in
// microseconds) but not made. One at a time.
class SlowStart {
public:
    explicit SlowStart(int looks);
    ~SlowStart();
    SlowStart(const SlowStart&) = delete;
    SlowStart& operator=(const SlowStart&) = delete;
};

// Makes the next start of a loop call this, on the starting thread, before the loop and its thread exist.
void beforeTheNextStart(std::function<void()> action);
