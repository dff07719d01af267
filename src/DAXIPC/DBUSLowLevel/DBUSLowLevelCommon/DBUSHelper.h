#pragma once

#include <functional>
#include <sstream>
#include <string>

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/assert.hpp>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveOutput.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// The steps that every method takes, on either side of the bus. Archives that cannot be read or written throw the
// library's archive_exception. No function here keeps a state: any thread.
namespace DBUSHelper {

// The serving side of a method with a result: reads the parameters, calls, and writes the result. `out` holds the
// header of the result before anything else happens. What `call` throws passes.
template <class R>
void handleAdapterMethod(std::stringstream& in, std::stringstream& out,
                         const std::function<void(boost::archive::text_iarchive&)>& deserialize,
                         const std::function<R()>& call) {
    ArchiveOutput outArchive(out);
    ArchiveInput inArchive(in);
    deserialize(inArchive.archive());
    const R result = call();
    outArchive << result;
}

// One exchange of bytes; on return `output` holds the result. An exception of the far side is thrown here by its type,
// what the proxy throws passes.
template <class ExceptionHandler, class DBUSProxy>
void exchange(const std::string& methodName, const std::stringstream& params, std::stringstream& output,
              DBUSProxy& proxy, const ExceptionHandler& handler) {
    std::string function;
    if (!proxy.call(methodName, params, output, function)) {
        handler.unwrapException(methodName, function, output);
        BOOST_ASSERT_MSG(false, "Adapter sent exception that is not known by Proxy.");
    }
}

// Reads the archive in `output` into `values`. An empty output leaves them as they are.
template <class... Values>
void readResult(std::stringstream& output, Values&... values) {
    if (output.rdbuf()->in_avail() > 0) {
        ArchiveInput archive(output);
        (archive >> ... >> values);
    }
}

// The calling side of a method with a result. Returns `defaultValue` when the reply has no result.
template <class R, class ExceptionHandler, class DBUSProxy>
R handleProxyMethod(const std::string& methodName, const std::function<void(boost::archive::text_oarchive&)>& serialize,
                    DBUSProxy& proxy, const ExceptionHandler& handler, R defaultValue) {
    std::stringstream params;
    ArchiveOutput archive(params);
    std::stringstream output;
    serialize(archive);
    exchange(methodName, params, output, proxy, handler);
    R result = defaultValue;
    readResult(output, result);
    return result;
}

// The calling side of a method without a result. What the reply holds is not read.
template <class ExceptionHandler, class DBUSProxy>
void handleProxyMethod(const std::string& methodName,
                       const std::function<void(boost::archive::text_oarchive&)>& serialize, DBUSProxy& proxy,
                       const ExceptionHandler& handler) {
    std::stringstream params;
    ArchiveOutput archive(params);
    std::stringstream output;
    serialize(archive);
    exchange(methodName, params, output, proxy, handler);
}

} // namespace DBUSHelper
} // namespace DAX::DAXIPC::DBUSLowLevel
