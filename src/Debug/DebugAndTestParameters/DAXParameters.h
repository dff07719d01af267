#pragma once

#include <string>

namespace DAX {
namespace DAXCommon {

// The switches of a development device. Any thread may read them.
class DAXParameters {
public:
    // The scenario that is played in place of a real transaction; empty in normal operation.
    std::string getServiceTransactionStubScenarioPath() const;
};

const DAXParameters& getDAXParameters();

} // namespace DAXCommon
} // namespace DAX
