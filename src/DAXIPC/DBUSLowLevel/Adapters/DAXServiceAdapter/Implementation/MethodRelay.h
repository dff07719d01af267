#pragma once

#include <sstream>
#include <tuple>
#include <type_traits>
#include <utility>

#include "DAXCommon/ServiceClientPriority.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSHelper.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// What the type of an operation tells: its interface, the arguments to decode and the result to encode.
template <class Operation>
struct OperationTraits;

template <class R, class I, class... Args>
struct OperationTraits<R (I::*)(Args...)> {
    using Result = R;
    using Interface = I;
    using Arguments = std::tuple<std::decay_t<Args>...>;
};

template <class... Values>
void decode(boost::archive::text_iarchive& archive, std::tuple<Values...>& values) {
    std::apply([&](Values&... value) { ((archive >> value), ...); }, values);
}

// A priority is sent as an unsigned number with the same bits; every other result is sent as it is.
template <class R>
R asSent(R result) {
    return result;
}
inline unsigned int asSent(DAXCommon::ServiceClientPriority priority) {
    return static_cast<unsigned int>(static_cast<int>(priority));
}

// Decodes the arguments of `operation` from `in`, calls it on `target` and encodes its result, if it has one, to `out`.
template <class Operation>
void relayCall(typename OperationTraits<Operation>::Interface& target, Operation operation, std::stringstream& in,
               std::stringstream& out) {
    using Result = typename OperationTraits<Operation>::Result;
    typename OperationTraits<Operation>::Arguments arguments;
    const auto deserialize = [&arguments](boost::archive::text_iarchive& archive) { decode(archive, arguments); };
    const auto call = [&] {
        return std::apply([&](auto&... argument) { return (target.*operation)(std::move(argument)...); }, arguments);
    };
    if constexpr (std::is_void_v<Result>) {
        ArchiveInput archive(in);
        deserialize(archive.archive());
        call();
    } else {
        using Sent = decltype(asSent(std::declval<Result>()));
        DBUSHelper::handleAdapterMethod<Sent>(in, out, deserialize, [&call] { return asSent(call()); });
    }
}

} // namespace DAX::DAXIPC::DBUSLowLevel
