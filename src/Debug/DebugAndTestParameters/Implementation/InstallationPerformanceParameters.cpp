#include "Debug/DebugAndTestParameters/InstallationPerformanceParameters.h"

#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"

namespace DAX {
namespace DAXCommon {

const InstallationPerformanceParameters& InstallationPerformanceParameters::getDefaultParameters() {
    static const InstallationPerformanceParameters parameters;
    return parameters;
}

} // namespace DAXCommon

const DAXCommon::InstallationPerformanceParameters& getInstallationPerformanceParameters() {
    return Common::getDebugAndTestParameters().getInstallationPerformanceParameters();
}

} // namespace DAX
