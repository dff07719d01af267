#pragma once

namespace DAX::Common::DBUSWrapper {

// What both ends have in common: the choice of the bus, and the preparation of the process.
class IDBUSWrapper {
public:
    // Which bus. Every value but 0 is the system bus.
    enum DBUSType : int { SESSION = 0, SYSTEM = 1 };

    // Prepares the bus library for several threads. Call it once per process, before any adapter or proxy exists;
    // calling it again does no harm.
    static void initialize();
};

// The first array of a reply.
extern const char REPLY_MESSAGE_TYPE_REPLY_STRING[];     // "REPLY"
extern const char REPLY_MESSAGE_TYPE_EXCEPTION_STRING[]; // "EXCEPTION"

} // namespace DAX::Common::DBUSWrapper
