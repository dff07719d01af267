#include "Debug/DebugAndTestParameters/DAXParameters.h"

namespace DAX {
namespace DAXCommon {

std::string DAXParameters::getServiceTransactionStubScenarioPath() const {
    return std::string();
}

const DAXParameters& getDAXParameters() {
    static const DAXParameters parameters;
    return parameters;
}

} // namespace DAXCommon
} // namespace DAX
