#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <hangguard.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/TemporaryRoot.h"

using DAX::Tests::TemporaryRoot;

namespace {

// The service manager's end: a datagram socket that NOTIFY_SOCKET names.
class HangguardTest : public testing::Test {
protected:
    HangguardTest() : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = (m_root / "notify").string();
        std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
        setenv("NOTIFY_SOCKET", path.c_str(), 1);
    }
    ~HangguardTest() override {
        unsetenv("NOTIFY_SOCKET");
        close(m_socket);
    }

    // The next message; empty when none was sent.
    std::string received() const {
        char buffer[256];
        const ssize_t size = recv(m_socket, buffer, sizeof(buffer), MSG_DONTWAIT);
        return size < 0 ? "" : std::string(buffer, static_cast<std::size_t>(size));
    }

private:
    const TemporaryRoot m_root;
    const int m_socket;
};

} // namespace

TEST_F(HangguardTest, RegistrationTellsTheLimitInMicroseconds) {
    EXPECT_GT(hangguard_register_watchdog_service(300), 0);

    EXPECT_EQ(received(), "WATCHDOG_USEC=300000000");
    EXPECT_EQ(received(), "");
}

TEST_F(HangguardTest, LimitsBeyondAnHourDoNotOverflow) {
    EXPECT_GT(hangguard_register_watchdog_service(2147483647), 0);

    EXPECT_EQ(received(), "WATCHDOG_USEC=2147483647000000");
}

TEST_F(HangguardTest, HeartbeatIsOneMessage) {
    EXPECT_GT(hangguard_watchdog_notify(), 0);

    EXPECT_EQ(received(), "WATCHDOG=1");
    EXPECT_EQ(received(), "");
}

TEST_F(HangguardTest, LimitThatIsNoTimeIsRefused) {
    EXPECT_EQ(hangguard_register_watchdog_service(0), -EINVAL);
    EXPECT_EQ(hangguard_register_watchdog_service(-1), -EINVAL);

    EXPECT_EQ(received(), "");
}

TEST_F(HangguardTest, WithoutAServiceManagerBothSucceedWithoutEffect) {
    unsetenv("NOTIFY_SOCKET");

    EXPECT_EQ(hangguard_register_watchdog_service(300), 0);
    EXPECT_EQ(hangguard_watchdog_notify(), 0);
    EXPECT_EQ(received(), "");
}

TEST_F(HangguardTest, ServiceManagerThatIsGoneFails) {
    setenv("NOTIFY_SOCKET", "/nowhere/notify", 1);

    EXPECT_LT(hangguard_register_watchdog_service(300), 0);
    EXPECT_LT(hangguard_watchdog_notify(), 0);
}
