#pragma once

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
