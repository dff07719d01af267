#pragma once

#include <sys/types.h>

namespace DAX::Tests {

// What a process has in memory now, and the most that it has had, in kilobytes. 0 when there is no such process.
long residentKilobytes(pid_t process);
long peakKilobytes(pid_t process);

// From now on the most that the process has had counts anew. False when the system refuses.
bool forgetPeak(pid_t process);

} // namespace DAX::Tests
