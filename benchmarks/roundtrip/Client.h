#pragma once

#include <string>

#include <sys/types.h>

#include "support/RawPeer.h"

namespace Roundtrip {

// Where a server is found.
struct Address {
    std::string connectionName;
    std::string objectPath;
    std::string interfaceName;
};

// "getServiceOwner" with one `ay`.
DAX::Tests::RawMessage makeCall(const Address& address);

// A plain libdbus client of one server, with its message made beforehand.
class Client {
public:
    explicit Client(const Address& address);

    // One round trip, in microseconds. Throws std::runtime_error when the answer is no normal reply.
    double call();

    // The server's process. It is started when it does not run.
    pid_t serverPid();

    // Ends the server and waits until its name is free.
    void endServer();

private:
    Address m_address;
    DAX::Tests::RawPeer m_peer;
    DAX::Tests::RawMessage m_message;
};

} // namespace Roundtrip
