#pragma once

namespace DAX::Tests {

// While an object lives, the journal of FakeKovan gets "loop pass" when an adapter's loop begins to wait, and "loop arm
// <watchdog>" and "loop disarm <watchdog>" with the first word of the watchdog's name. The functions that are listed
// under --wrap in the build file of these tests end up here. One object at a time.
class GuardNotes {
public:
    GuardNotes();
    ~GuardNotes();
    GuardNotes(const GuardNotes&) = delete;
    GuardNotes& operator=(const GuardNotes&) = delete;
};

} // namespace DAX::Tests
