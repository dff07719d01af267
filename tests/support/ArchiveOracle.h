#pragma once

#include <exception>
#include <sstream>
#include <string>
#include <tuple>

// clang-format off
#include <boost/serialization/split_free.hpp> // which the next one needs and does not include
#include <boost/date_time/posix_time/time_serialize.hpp>
// clang-format on
#include <boost/exception/exception.hpp>
#include <boost/serialization/library_version_type.hpp> // which the next one needs and does not include
#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/CoreMethods.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"

// Whether the system's own ends read an archive, asked of the code that they read with.
namespace DAX::Tests {

template <class... Values>
bool isRead(const DAXIPC::DBUSLowLevel::Archive<Values...>&, const std::string& bytes) {
    try {
        std::stringstream stream(bytes);
        DAXIPC::DBUSLowLevel::ArchiveInput archive(stream);
        std::tuple<Values...> values;
        std::apply([&](Values&... value) { ((archive >> value), ...); }, values);
        return true;
    } catch (const std::exception&) {
    } catch (const boost::exception&) {
    }
    return false;
}
inline bool isRead(DAXIPC::DBUSLowLevel::NoArchive, const std::string&) {
    return true;
}

// Calls visit(side, name, isRequest, isRead) for each request and each reply, where isRead(bytes) is the above.
template <class Visit>
void forEachArchive(const Visit& visit) {
    const auto all = [&visit](const char* side, const auto& methods) {
        const auto both = [&](const auto& method) {
            visit(side, method.name, true, [&](const std::string& bytes) { return isRead(method.request, bytes); });
            visit(side, method.name, false, [&](const std::string& bytes) { return isRead(method.reply, bytes); });
        };
        std::apply([&both](const auto&... method) { (both(method), ...); }, methods);
    };
    all("service", DAXIPC::DBUSLowLevel::ServiceMethods::ALL);
    all("core", DAXIPC::DBUSLowLevel::CoreMethods::ALL);
}

} // namespace DAX::Tests
