#pragma once

namespace DAX::Tests {

// Stand before the system in this test program: from now on each signalfd fails with this error, each poll does, or
// each poll finds all that it looks at broken. For the rest of the process: set it in a child.
void failSignalfd(int error);
void failPoll(int error);
void findAllBroken();

// How often poll has been called since.
int polls();

} // namespace DAX::Tests
