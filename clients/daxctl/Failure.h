#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace daxctl {

// A failed call to the daemon, described for people and scripts.
struct Failure {
    std::string name;             // the exception's name on the bus, or the kind of transport failure
    std::string supportCode;      // empty when there is none
    std::string text;             // the far end's explanation, in one line
    std::string diagnostic;       // the chain of all hops
    bool isPlain = false;         // the text says it all to people
    std::string kind = "UNKNOWN"; // as <dax/client.h> names the kinds of Error and the reasons of Unreachable

    std::string toString() const; // for a terminal
    nlohmann::ordered_json toJson() const;
};

// Describes the current exception. Only within a catch block.
Failure describeCurrentException();

} // namespace daxctl
