#pragma once

#include <tuple>
#include <type_traits>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSHelper.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/Method.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// callRemote<METHOD>(proxy, arguments...) calls METHOD with the arguments that its description has, and returns its
// result, or an empty one when the reply has none. It throws what the far side threw, by type, and what
// IDBUSProxy::call throws.
template <const auto& METHOD, class... Args>
ResultOf<METHOD> callRemote(Common::DBUSWrapper::IDBUSProxy& proxy, const Args&... args) {
    static_assert(std::is_same_v<std::tuple<Args...>, ArgumentsOf<METHOD>>,
                  "the arguments are not what the method's description says");
    using R = ResultOf<METHOD>;
    const auto serialize = [&](boost::archive::text_oarchive& archive) { ((archive << args), ...); };
    if constexpr (std::is_void_v<R>) {
        DBUSHelper::handleProxyMethod(METHOD.name, serialize, proxy, StandardExceptionHandler());
    } else {
        static const R noResult{}; // with a temporary, the compiler warns of uninitialised members in empty optionals
        return DBUSHelper::handleProxyMethod<R>(METHOD.name, serialize, proxy, StandardExceptionHandler(), noResult);
    }
}

} // namespace DAX::DAXIPC::DBUSLowLevel
