#pragma once

#include <type_traits>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSHelper.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// callRemote<R>(proxy, method, arguments...) calls `method` with the arguments in order and returns its result, or R()
// when the reply has none. It throws what the far side threw, by type, and what IDBUSProxy::call throws.
template <class R = void, class... Args>
R callRemote(Common::DBUSWrapper::IDBUSProxy& proxy, const char* method, const Args&... args) {
    const auto serialize = [&](boost::archive::text_oarchive& archive) { ((archive << args), ...); };
    if constexpr (std::is_void_v<R>) {
        DBUSHelper::handleProxyMethod(method, serialize, proxy, StandardExceptionHandler());
    } else {
        static const R noResult{}; // with a temporary, the compiler warns of uninitialised members in empty optionals
        return DBUSHelper::handleProxyMethod<R>(method, serialize, proxy, StandardExceptionHandler(), noResult);
    }
}

} // namespace DAX::DAXIPC::DBUSLowLevel
