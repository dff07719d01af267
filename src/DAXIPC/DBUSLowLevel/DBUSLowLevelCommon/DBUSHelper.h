#pragma once

#include <functional>
#include <sstream>
#include <string>

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/assert.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"

namespace DAX {
namespace DAXIPC {
namespace DBUSLowLevel {

// What every method goes through, on either side of the bus. Archives that cannot be read or written end in the
// library's archive_exception.
namespace DBUSHelper {

// The serving side of a method with a result: reads the parameters, calls, writes the result. The header of the result
// is in `out` before anything else happens.
template <class R>
void handleAdapterMethod(std::stringstream& in, std::stringstream& out,
                         std::function<void(boost::archive::text_iarchive&)> deserialize, std::function<R()> call) {
    boost::archive::text_oarchive outArchive(out);
    ArchiveInput inArchive(in);
    deserialize(inArchive.archive());
    const R result = call();
    outArchive << result;
}

namespace detail {

// Calls the method over `proxy` and gives the bytes of its result; an exception of the far side is thrown here.
template <class ExceptionHandler, class DBUSProxy>
void callProxyMethod(const std::string& methodName,
                     const std::function<void(boost::archive::text_oarchive&)>& serialize, DBUSProxy& proxy,
                     const ExceptionHandler& handler, std::stringstream& output) {
    std::stringstream params;
    boost::archive::text_oarchive archive(params);
    std::string function;
    serialize(archive);
    if (!proxy.call(methodName, params, output, function)) {
        handler.unwrapException(methodName, function, output);
        BOOST_ASSERT_MSG(false, "Adapter sent exception that is not known by Proxy.");
    }
}

} // namespace detail

// The calling side of a method with a result, which is `defaultValue` when the reply brings none.
template <class R, class ExceptionHandler, class DBUSProxy>
R handleProxyMethod(const std::string& methodName, std::function<void(boost::archive::text_oarchive&)> serialize,
                    DBUSProxy& proxy, const ExceptionHandler& handler, R defaultValue) {
    std::stringstream output;
    detail::callProxyMethod(methodName, serialize, proxy, handler, output);
    R result = defaultValue;
    if (output.rdbuf()->in_avail() > 0) {
        ArchiveInput(output) >> result;
    }
    return result;
}

// The calling side of a method without a result: whatever the reply brings is not read.
template <class ExceptionHandler, class DBUSProxy>
void handleProxyMethod(const std::string& methodName, std::function<void(boost::archive::text_oarchive&)> serialize,
                       DBUSProxy& proxy, const ExceptionHandler& handler) {
    std::stringstream output;
    detail::callProxyMethod(methodName, serialize, proxy, handler, output);
}

} // namespace DBUSHelper
} // namespace DBUSLowLevel
} // namespace DAXIPC
} // namespace DAX
