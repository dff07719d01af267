#pragma once

#include <string>
#include <utility>

#include <boost/assert/source_location.hpp>
#include <vconf.h>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfException.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfKeys.h"
#include "Platform/SystemAPI/VconfSystemAPI/VConfWrappers.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Platform {
namespace VConfDetails {

// How a value of this type is read. 0 is success.
template <class T, int (*function)(const char*, T*)>
struct Getter {
    // The store's result; `value` is set when that is 0.
    static int read(const char* key, T* value) { return function(key, value); }
};

// How a value of this type is written. 0 is success.
template <class T, int (*function)(const char*, T)>
struct Setter {
    // The store's result.
    static int write(const char* key, const T& value) { return function(key, value); }
};

// From a value type to the function that reads it.
template <class... Getters>
struct GetterMapStruct : Getters... {
    using Getters::read...;
};

// From a value type to the function that writes it.
template <class... Setters>
struct SetterMapStruct : Setters... {
    using Setters::write...;
};

// One access to one key of the settings store. Holds the key and nothing else. Any thread may use it; nothing orders
// two writers of one key. Nothing is tried again.
template <class GetterMapT, class SetterMapT, class T>
class VConfT {
public:
    explicit VConfT(std::string key) : m_key(std::move(key)) {}
    explicit VConfT(const VConfKey<T>& key) : m_key(key.name) {}

    // Throws VConfException when the store fails, which is also logged.
    T get() const {
        T value{};
        throwIfFailed(GetterMapT::read(m_key.c_str(), &value), GET_FAILED, BOOST_CURRENT_LOCATION);
        return value;
    }

    // The default when the store fails, which is also logged.
    T getOr(const T& defaultValue) const {
        T value = defaultValue;
        if (GetterMapT::read(m_key.c_str(), &value) == 0) {
            return value;
        }
        DAX_LOG(WRN) << GET_FAILED << m_key << ", return default value";
        return defaultValue;
    }

    // Throws VConfException when the store fails, which is also logged.
    void set(const T& value) const {
        throwIfFailed(SetterMapT::write(m_key.c_str(), value), SET_FAILED, BOOST_CURRENT_LOCATION);
    }

private:
    static constexpr const char* GET_FAILED = "vconf_get failed while trying to access key: ";
    static constexpr const char* SET_FAILED = "vconf_set failed while trying to access key: ";

    void throwIfFailed(int result, const char* failure, const boost::source_location& site) const {
        if (result == 0) {
            return;
        }
        const std::string text = failure + m_key;
        DAX_LOG(WRN) << text;
        DAX_THROW_AT(site, VConfException(),
                     Common::Utils::errinfo_stream(text) << Common::Utils::errinfo_errorcode(result));
    }

    std::string m_key;
};

using Getters = GetterMapStruct<Getter<bool, vconf_get_bool_wrapper>, Getter<int, vconf_get_int>,
                                Getter<double, vconf_get_dbl>, Getter<std::string, vconf_get_string_wrapper>>;
using Setters = SetterMapStruct<Setter<bool, vconf_set_bool_wrapper>, Setter<int, vconf_set_int>,
                                Setter<double, vconf_set_dbl>, Setter<std::string, vconf_set_string_wrapper>>;

} // namespace VConfDetails

// The settings store by value type: bool, int, double or std::string.
template <class T>
using VConfT = VConfDetails::VConfT<VConfDetails::Getters, VConfDetails::Setters, T>;

// The value of this key, or the key's default when the store fails, which is also logged.
template <class T>
T readOrDefault(const VConfKeyWithDefault<T>& key) {
    return VConfT<T>(key).getOr(key.defaultValue);
}

} // namespace DAX::Platform
