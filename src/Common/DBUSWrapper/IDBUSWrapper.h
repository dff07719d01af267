#pragma once

namespace DAX::Common::DBUSWrapper {

// What both ends have in common: the bus that is meant, and what the process does before it uses one.
class IDBUSWrapper {
public:
    // Which bus. Every value but 0 is the system bus.
    enum DBUSType : int { SESSION = 0, SYSTEM = 1 };

    // Makes the bus library fit for several threads. Once per process, before any adapter or proxy exists; once more
    // does no harm.
    static void initialize();
};

// The first array of a reply.
extern const char REPLY_MESSAGE_TYPE_REPLY_STRING[];     // "REPLY"
extern const char REPLY_MESSAGE_TYPE_EXCEPTION_STRING[]; // "EXCEPTION"

} // namespace DAX::Common::DBUSWrapper
