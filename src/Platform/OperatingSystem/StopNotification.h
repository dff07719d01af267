#pragma once

namespace DAX::Platform {

// Tells who started this process that it is about to end, so that a new one is started for what comes in from now on:
// systemd takes a unit for active until its process has gone, and a start of an active unit does nothing. Sends
// "STOPPING=1" to the datagram socket that NOTIFY_SOCKET names; does nothing where there is none, or when it takes
// nothing at once. Any thread.
void tellThatTheProcessStops() noexcept;

} // namespace DAX::Platform
