#include "Platform/OperatingSystem/StopNotification.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace DAX::Platform {
namespace {

const char STOPPING[] = "STOPPING=1";

// The length of the address, 0 when the text is not an address. A leading "@" stands for the zero byte of an abstract
// address.
socklen_t readAddress(const char* text, sockaddr_un& address) {
    const std::size_t length = text != nullptr ? std::strlen(text) : 0;
    if (length < 2 || length >= sizeof(address.sun_path) || (text[0] != '/' && text[0] != '@')) {
        return 0;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, text, length);
    if (text[0] == '@') {
        address.sun_path[0] = '\0';
    }
    return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
}

} // namespace

void tellThatTheProcessStops() noexcept {
    sockaddr_un address{};
    const socklen_t length = readAddress(std::getenv("NOTIFY_SOCKET"), address);
    if (length == 0) {
        return;
    }
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0) {
        return;
    }
    sendto(socket, STOPPING, sizeof(STOPPING) - 1, MSG_NOSIGNAL | MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&address),
           length);
    close(socket);
}

} // namespace DAX::Platform
