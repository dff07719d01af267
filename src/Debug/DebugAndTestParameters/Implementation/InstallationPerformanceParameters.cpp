#include "Debug/DebugAndTestParameters/InstallationPerformanceParameters.h"

#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"

namespace DAX::DAXCommon {

const InstallationPerformanceParameters& InstallationPerformanceParameters::getDefaultParameters() {
    static const InstallationPerformanceParameters parameters;
    return parameters;
}

} // namespace DAX::DAXCommon

namespace DAX {

const DAXCommon::InstallationPerformanceParameters& getInstallationPerformanceParameters() {
    return Common::getDebugAndTestParameters().getInstallationPerformanceParameters();
}

} // namespace DAX
