#pragma once

#include <type_traits>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSHelper.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// callRemote<R>(proxy, method, arguments...): calls `method` with the arguments in order and gives its result; a reply
// that brings none gives R(). Throws what the far side threw, by type, and what stood in the way of the call.
template <class R = void, class... Args>
R callRemote(Common::DBUSWrapper::IDBUSProxy& proxy, const char* method, const Args&... args) {
    const auto serialize = [&](boost::archive::text_oarchive& archive) { ((archive << args), ...); };
    if constexpr (std::is_void_v<R>) {
        DBUSHelper::handleProxyMethod(method, serialize, proxy, StandardExceptionHandler());
    } else {
        static const R noResult{}; // a temporary makes the compiler see uninitialised members in empty optionals
        return DBUSHelper::handleProxyMethod<R>(method, serialize, proxy, StandardExceptionHandler(), noResult);
    }
}

} // namespace DAX::DAXIPC::DBUSLowLevel
