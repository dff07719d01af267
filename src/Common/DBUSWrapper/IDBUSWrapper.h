#pragma once

namespace DAX {
namespace Common {
namespace DBUSWrapper {

class IDBUSWrapper {
public:
    // Which bus. Every value but 0 is the system bus.
    enum DBUSType : int { SESSION = 0, SYSTEM = 1 };

    // Once per process, before any adapter or proxy exists.
    static void initialize();
};

extern const char REPLY_MESSAGE_TYPE_REPLY_STRING[];     // "REPLY"
extern const char REPLY_MESSAGE_TYPE_EXCEPTION_STRING[]; // "EXCEPTION"

} // namespace DBUSWrapper
} // namespace Common
} // namespace DAX
