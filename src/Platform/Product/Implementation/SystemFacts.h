#pragma once

#include <string>

#include <boost/assert/source_location.hpp>
#include <system_info.h>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/SystemInfoAPIInternalProblemException.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Platform::SystemFacts {

// How a fact of the device is read: by its number, or by its feature's key. All return the platform's result, 0 for
// success; a failure leaves a text as it was. Any thread may ask.
int read(system_info_key_e key, std::string& value);
int read(const char* key, std::string& value);
int read(const char* key, bool& value);
int read(const char* key, int& value);

// The value, which must be there. Otherwise logs the failure and throws SystemInfoAPIInternalProblemException with it,
// as if from `site`.
template <class Value, class Key>
Value required(Key key, const char* failure, const boost::source_location& site) {
    Value value{};
    if (read(key, value) != 0) {
        DAX_LOG(ERR) << failure;
        DAX_THROW_AT(site, SystemInfoAPIInternalProblemException(), Common::Utils::errinfo_description(failure));
    }
    return value;
}

// "true" or "false", as the log has it.
const char* textOf(bool value);

} // namespace DAX::Platform::SystemFacts
