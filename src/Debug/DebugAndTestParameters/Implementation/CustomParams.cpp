#include <stdexcept>
#include <utility>

#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"

namespace DAX::DAXCommon {
namespace {

void logNoInt(const std::string& name, const std::string& value, const char* problem, const std::exception& exception) {
    DAX_LOG(ERR) << "Getting custom debug parameter " << name << ": " << value << problem << exception.what();
}

} // namespace

boost::optional<std::string> DebugAndTestParameters::getCustomStringParam(const std::string& name) const {
    const auto found = m_customParams.find(name);
    return found == m_customParams.end() ? boost::none : boost::make_optional(found->second);
}

std::string DebugAndTestParameters::getCustomStringParam(const std::string& name,
                                                         const std::string& defaultValue) const {
    return getCustomStringParam(name).value_or(defaultValue);
}

boost::optional<int> DebugAndTestParameters::getCustomIntParam(const std::string& name) const {
    const boost::optional<std::string> value = getCustomStringParam(name);
    if (!value) {
        return boost::none;
    }
    try {
        // Ignores what follows the number.
        return std::stoi(*value);
    } catch (const std::invalid_argument& exception) {
        logNoInt(name, *value, " can not be converted to integer. Exception: ", exception);
    } catch (const std::out_of_range& exception) {
        logNoInt(name, *value, " is out of the range of representable values. Exception: ", exception);
    }
    return boost::none;
}

int DebugAndTestParameters::getCustomIntParam(const std::string& name, int defaultValue) const {
    return getCustomIntParam(name).value_or(defaultValue);
}

boost::optional<bool> DebugAndTestParameters::getCustomBoolParam(const std::string& name) const {
    const boost::optional<int> value = getCustomIntParam(name);
    return value ? boost::make_optional(*value != 0) : boost::none;
}

bool DebugAndTestParameters::getCustomBoolParam(const std::string& name, bool defaultValue) const {
    return getCustomBoolParam(name).value_or(defaultValue);
}

void DebugAndTestParameters::setCustomStringParam(const std::string& name, boost::optional<std::string> value) {
    if (value) {
        m_customParams[name] = *std::move(value);
    } else {
        m_customParams.erase(name);
    }
}

void DebugAndTestParameters::setCustomIntParam(const std::string& name, boost::optional<int> value) {
    setCustomStringParam(name, value ? boost::make_optional(std::to_string(*value)) : boost::none);
}

void DebugAndTestParameters::setCustomBoolParam(const std::string& name, boost::optional<bool> value) {
    setCustomIntParam(name, value ? boost::make_optional(*value ? 1 : 0) : boost::none);
}

} // namespace DAX::DAXCommon
