#pragma once

#include <boost/assert/source_location.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform::SettingAccess {

// How the settings for the user interface are read and written.

// Logs the operation with its argument and writes the value. False when that fails, which is logged.
template <class T>
bool announceAndSet(const char* operation, const VConfKey<T>& key, const T& value) {
    DAX_LOG(INF) << "CSystemControl::" << operation << "(" << value << ")";
    try {
        VConfT<T>(key).set(value);
        return true;
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot set value for VConf key: " << key;
        return false;
    }
}

// The same, but a failure also throws GenericException with this description, as if from `site`.
template <class T>
void announceAndSet(const char* operation, const VConfKey<T>& key, const T& value, const char* failure,
                    const boost::source_location& site) {
    if (!announceAndSet(operation, key, value)) {
        DAX_THROW_AT(site, Common::Utils::GenericException(), Common::Utils::errinfo_description(failure));
    }
}

// Writes it, or logs that it cannot be done and lets the store's exception pass.
inline void setQuoted(const VConfKey<int>& key, int value) {
    try {
        VConfT<int>(key).set(value);
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot set the value: \"" << value << "\" in vconf variable: \"" << key << "\"";
        throw;
    }
}

// The value, or the key's default, with a log line, when the store fails.
template <class T>
T getOrDefault(const VConfKeyWithDefault<T>& key) {
    try {
        return VConfT<T>(key).get();
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot get the value from VConf variable: " << key
                     << ". Returning default value: " << key.defaultValue;
        return key.defaultValue;
    }
}

// Whether a switch is on; its default when the store fails, as readOrDefault gives it.
inline bool isOne(const VConfKeyWithDefault<int>& key) {
    return readOrDefault(key) == 1;
}

// Returns the value if it is in the enumeration, that is from 0 to `last`. Otherwise throws GenericException, as if
// from `site`.
inline int checked(const VConfKey<int>& key, int value, int last, const boost::source_location& site) {
    if (value < 0 || value > last) {
        DAX_LOG(ERR) << "Incorrect VConf value of key: " << key << ", value = " << value;
        DAX_THROW_AT(site, Common::Utils::GenericException(), "Incorrect value stored in VConf: " << value);
    }
    return value;
}

} // namespace DAX::Platform::SettingAccess
