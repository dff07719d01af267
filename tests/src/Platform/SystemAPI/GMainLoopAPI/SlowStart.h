#pragma once

#include <functional>

// Stands before GLib in this test program. While an object lives, a loop does not seem to run for its first `looks`;
// each look is noted in the journal ("look"), and a pause is noted ("pause 100000", in microseconds) and not made. One
// at a time.
class SlowStart {
public:
    explicit SlowStart(int looks);
    ~SlowStart();
    SlowStart(const SlowStart&) = delete;
    SlowStart& operator=(const SlowStart&) = delete;
};

// Has the next start of a loop call this, on the starting thread, before there is the loop or its thread.
void beforeTheNextStart(std::function<void()> action);
