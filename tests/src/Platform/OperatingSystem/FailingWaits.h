#pragma once

namespace DAX::Tests {

// These replace calls of the system in this test program. From now on every signalfd fails with this error, every poll
// fails with it, or every poll finds all its descriptors broken. It stays so for the rest of the process: set it in a
// child.
void failSignalfd(int error);
void failPoll(int error);
void findAllBroken();

// How often poll has been called since then.
int polls();

} // namespace DAX::Tests
