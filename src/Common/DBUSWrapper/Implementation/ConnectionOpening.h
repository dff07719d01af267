#pragma once

#include <chrono>
#include <string>

#include "Common/DBUSWrapper/Implementation/DBUSConnectionHandle.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"

namespace DAX::Common::DBUSWrapper {

// Opens a private connection to the address, which need not have let this process in yet. Without one until the
// deadline it returns null, and `error` is DBUS_ERROR_TIMEOUT; for another failure `error` is what libdbus says. Throws
// ErrorConnectingToDBUS when the system has no thread left. Any thread.
//
// libdbus itself waits without a bound: for ever at the socket of a bus that stands still and has no room for one more.
// So it waits on a thread of its own, which stays behind at the deadline and ends when the bus goes on or ends. While
// eight of them wait for one address, nobody makes another one for it. A child process counts its own only.
DBUSConnectionHandle openConnection(const std::string& address, std::chrono::steady_clock::time_point deadline,
                                    DBUSError& error);

} // namespace DAX::Common::DBUSWrapper
