#pragma once

namespace DAX::Platform {

// Tells the service manager of the system that this process is about to end, so that a new process is started for calls
// that come from now on. Without that, systemd takes the unit for active until the process has gone, and to start an
// active unit does nothing. Sends "STOPPING=1" to the datagram socket that NOTIFY_SOCKET names. Does nothing when there
// is none, or when it cannot take the message at once. Any thread may call.
void tellThatTheProcessStops() noexcept;

} // namespace DAX::Platform
