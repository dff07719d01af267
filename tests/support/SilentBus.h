#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>

#include "Utility/Utils/FileDescriptor.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {

// The socket of a bus that stands still.
class SilentBus {
public:
    enum class Kind {
        HAS_ROOM, // connections are made, and nobody answers
        IS_FULL   // no connection is made: all that it holds are waiting already
    };

    explicit SilentBus(Kind kind) : m_listener(newSocket()) {
        path().copy(m_address.sun_path, sizeof m_address.sun_path - 1);
        if (bind(m_listener.get(), as(m_address), sizeof m_address) != 0 || listen(m_listener.get(), 1) != 0) {
            throw std::runtime_error("no socket at " + path());
        }
        while (kind == Kind::IS_FULL && connectOneMore()) {
        }
    }

    std::string address() const { return "unix:path=" + path(); }

    // Whoever waits is turned away.
    void end() { m_listener = {}; }

private:
    static Common::Utils::FileDescriptor newSocket() {
        return Common::Utils::FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    }

    static const sockaddr* as(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

    std::string path() const { return (m_root / "silent").string(); }

    // False when there is no room.
    bool connectOneMore() {
        m_waiting.push_back(newSocket());
        if (connect(m_waiting.back().get(), as(m_address), sizeof m_address) == 0) {
            return true;
        }
        if (errno != EAGAIN) {
            throw std::runtime_error("no connection to " + path());
        }
        return false;
    }

    TemporaryRoot m_root;
    sockaddr_un m_address{AF_UNIX, {}};
    Common::Utils::FileDescriptor m_listener;
    std::vector<Common::Utils::FileDescriptor> m_waiting;
};

} // namespace DAX::Tests
