#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace daxctl {

// What went wrong in a call to the daemon, as a person and a script want to know it.
struct Failure {
    std::string name;        // the exception's name on the bus, or the kind of transport failure
    std::string supportCode; // empty when there is none
    std::string text;        // what the far end said, in one line
    std::string diagnostic;  // the chain of all hops

    std::string toString() const;
    nlohmann::ordered_json toJson() const;
};

// Describes the exception being handled; only within a catch block.
Failure describeCurrentException();

// The free text or the description that the throw site at the far end gave, found in the chain of a diagnostic text;
// empty when it gave neither.
std::string innermostText(const std::string& diagnostic);

} // namespace daxctl
