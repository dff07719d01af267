#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace daxctl {

// A failed call to the daemon, described for people and scripts.
struct Failure {
    std::string name;        // the exception's name on the bus, or the kind of transport failure
    std::string supportCode; // empty when there is none
    std::string text;        // the far end's explanation, in one line
    std::string diagnostic;  // the chain of all hops

    std::string toString() const;
    nlohmann::ordered_json toJson() const;
};

// Describes the current exception. Only within a catch block.
Failure describeCurrentException();

// The free text or the description from the throw site at the far end, taken out of the chain of a diagnostic text;
// empty when there is neither.
std::string innermostText(const std::string& diagnostic);

} // namespace daxctl
