#include "Platform/OperatingSystem/StopNotification.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

// The service manager's end of the socket, at an address in the form of NOTIFY_SOCKET.
class ServiceManagerEnd {
public:
    explicit ServiceManagerEnd(const std::string& name) : m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        if (name[0] == '@') {
            address.sun_path[0] = '\0';
        }
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), length), 0);
        setenv("NOTIFY_SOCKET", name.c_str(), 1);
    }
    ServiceManagerEnd(const ServiceManagerEnd&) = delete;
    ServiceManagerEnd& operator=(const ServiceManagerEnd&) = delete;
    ~ServiceManagerEnd() {
        unsetenv("NOTIFY_SOCKET");
        close(m_socket);
    }

    // The next message that has arrived; empty when there is none.
    std::string take() {
        char text[64];
        const ssize_t length = recv(m_socket, text, sizeof(text), 0);
        return std::string(text, length > 0 ? static_cast<std::size_t>(length) : 0);
    }

    // Fills the socket, so that it has no room for another message.
    void fill() {
        sockaddr_un address{};
        socklen_t length = sizeof(address);
        getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length);
        const int sender = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0);
        while (sendto(sender, "x", 1, 0, reinterpret_cast<sockaddr*>(&address), length) == 1) {
        }
        close(sender);
    }

private:
    const int m_socket;
};

TEST(StopNotification, ReachesASocketOfTheFileSystem) {
    const TemporaryRoot root;
    ServiceManagerEnd manager(root / "notify");
    Platform::tellThatTheProcessStops();
    EXPECT_EQ(manager.take(), "STOPPING=1");
    EXPECT_EQ(manager.take(), "");
}

TEST(StopNotification, ReachesAnAbstractSocket) {
    ServiceManagerEnd manager("@dax-stop-notification-" + std::to_string(getpid()));
    Platform::tellThatTheProcessStops();
    EXPECT_EQ(manager.take(), "STOPPING=1");
}

TEST(StopNotification, DoesNotWaitForAFullSocket) {
    const TemporaryRoot root;
    ServiceManagerEnd manager(root / "notify");
    manager.fill();
    Platform::tellThatTheProcessStops();
    while (manager.take() == "x") {
    }
    EXPECT_EQ(manager.take(), "");
}

TEST(StopNotification, GoesNowhereWithoutAnAddress) {
    unsetenv("NOTIFY_SOCKET");
    Platform::tellThatTheProcessStops();
    for (const std::string& nonsense :
         {std::string(), std::string("@"), std::string("relative"), std::string(300, '/')}) {
        setenv("NOTIFY_SOCKET", nonsense.c_str(), 1);
        Platform::tellThatTheProcessStops();
    }
    unsetenv("NOTIFY_SOCKET");
}

} // namespace
} // namespace DAX::Tests
