#pragma once

#include <sys/types.h>

namespace DAX::Tests {

// The memory of a process now, and the most that it has had, in kilobytes. 0 when there is no such process.
long residentKilobytes(pid_t process);
long peakKilobytes(pid_t process);

// Restarts the measurement of the most memory that the process has had. False when the system refuses.
bool forgetPeak(pid_t process);

} // namespace DAX::Tests
