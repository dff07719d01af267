#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "DAXIPC/DBUSLowLevel/Decoder/ArchiveDecoder.h"
#include "monitor/Peers.h"

namespace monitor {

using DAX::DAXIPC::DBUSLowLevel::DecodedArchive;
using DAX::DAXIPC::DBUSLowLevel::Side;

// A connection that calls, as far as it is known.
struct Caller {
    std::string connection; // its unique name
    std::optional<Process> process;
    std::string client; // the name by which it has introduced itself to the service
};

// How a call ended.
enum class Outcome {
    DONE,
    REFUSED, // an empty bus name
    FAILED,  // an exception, or an error of the bus
    BROKEN   // the archive of the call or of the answer cannot be read
};

// A call of the service or of the core.
struct CallEvent {
    std::int64_t time = 0;    // in microseconds since 1970
    std::uint64_t number = 0; // counted from 1; the answer has the same
    Side side = Side::SERVICE;
    std::string method;
    bool isKnown = true; // otherwise there is no such method, and the arguments are not decoded
    Caller caller;
    std::string session; // the ids of what it belongs to; empty where it belongs to none
    std::string transaction;
    DecodedArchive arguments;
    std::size_t unreadBytes = 0; // behind the arguments of an archive that is not broken
    bool expectsAnswer = true;
};

// The answer to a call.
struct AnswerEvent {
    std::int64_t time = 0;
    std::int64_t latency = 0; // in microseconds
    Outcome outcome = Outcome::DONE;
    bool hasArchive = false; // a reply may come without any, and `result` is empty then
    DecodedArchive result;   // of a reply; not of an exception
    std::string failure;     // the exception's or the bus error's name
    bool isBusError = false;
    std::string supportCode;
    std::string text; // the explanation nearest to the cause
};

// A name of the service or the core changes hands, or a connection that has called them leaves the bus.
struct OwnerEvent {
    std::int64_t time = 0;
    std::optional<Side> side; // nothing for the connection of a caller
    std::string name;
    std::string from;    // empty when there was no owner
    std::string to;      // empty when there is none
    Caller caller;       // of a caller that leaves
    std::string session; // that ends with it
};

// Something that cannot be shown, such as a message in a capture that is cut.
struct NoteEvent {
    std::int64_t time = 0;
    std::string text;
};

// Gets what was seen on the bus, in its order. The references are good for as long as the call lasts.
class EventSink {
public:
    virtual ~EventSink() = default;

    // A call was made. Its answer comes later, or never: when nobody answers, or when too much came in between.
    virtual void onCall(const CallEvent& call) = 0;

    // A call was answered. It is the one that onCall has got before.
    virtual void onAnswer(const CallEvent& call, const AnswerEvent& answer) = 0;

    // A name has another owner or none, or a caller has left the bus.
    virtual void onOwner(const OwnerEvent& change) = 0;

    // Something came that cannot be shown.
    virtual void onNote(const NoteEvent& note) = 0;
};

} // namespace monitor
