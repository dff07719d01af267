#pragma once

#include <string>

#include <sys/types.h>

#include "support/RawPeer.h"

namespace Roundtrip {

// The address of a server.
struct Address {
    std::string connectionName;
    std::string objectPath;
    std::string interfaceName;
};

// A call of "getServiceOwner" with one `ay`.
DAX::Tests::RawMessage makeCall(const Address& address);

// A plain libdbus client of one server. Its message is made beforehand.
class Client {
public:
    explicit Client(const Address& address);

    // Makes one round trip and returns its time in microseconds. Throws std::runtime_error when the answer is not a
    // normal reply.
    double call();

    // The server's process, which is started if it does not run.
    pid_t serverPid();

    // Ends the server and waits until its name is free.
    void endServer();

private:
    Address m_address;
    DAX::Tests::RawPeer m_peer;
    DAX::Tests::RawMessage m_message;
};

} // namespace Roundtrip
