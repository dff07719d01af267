#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace monitor {

// A value in a message. Only what the update stack and the bus itself send is taken out.
struct BusArgument {
    char type = '?';          // 's' text, 'b' bytes, 'u' number, '?' anything else
    std::string text;         // of 's' and 'b'
    std::uint32_t number = 0; // of 'u'
};

// A message on the bus. What it does not have is empty or 0.
struct BusMessage {
    enum class Type { CALL, REPLY, ERROR, SIGNAL, OTHER };

    Type type = Type::OTHER;
    std::int64_t time = 0; // in microseconds since 1970, when it was seen
    std::uint32_t serial = 0;
    std::uint32_t replySerial = 0;
    bool expectsReply = true;
    std::string sender;
    std::string destination;
    std::string path;
    std::string interface;
    std::string member;
    std::string error; // its name
    std::vector<BusArgument> arguments;
};

// Reads the bytes of one whole message, of either byte order. Nothing when they are none; `reason` then says why. Any
// bytes may come.
std::optional<BusMessage> parseMessage(std::string_view bytes, std::int64_t time, std::string& reason);

} // namespace monitor
