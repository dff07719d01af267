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

// The one form that there is: a member function.
template <class R, class I, class... Args>
struct OperationTraits<R (I::*)(Args...)> {
    using Result = R;
    using Interface = I;
    using Arguments = std::tuple<std::decay_t<Args>...>;
};

// A priority is sent as an unsigned number with the same bits; every other result is sent as it is.
template <class R>
R asSent(R result) {
    return result;
}
inline unsigned int asSent(DAXCommon::ServiceClientPriority priority) {
    return static_cast<unsigned int>(static_cast<int>(priority));
}

// Decodes the values of a tuple from `in`, calls `call` with them and encodes its result, if it has one, to `out`.
// Throws archive_exception for what cannot be decoded, before the call, and what the call throws.
template <class Arguments, class Call>
void relayCall(std::stringstream& in, std::stringstream& out, const Call& call) {
    Arguments arguments;
    const auto decode = [&arguments](boost::archive::text_iarchive& archive) {
        std::apply([&archive](auto&... argument) { ((archive >> argument), ...); }, arguments);
    };
    const auto run = [&] { return std::apply(call, std::move(arguments)); };
    using Result = decltype(run());
    if constexpr (std::is_void_v<Result>) {
        ArchiveInput archive(in);
        decode(archive.archive());
        run();
    } else {
        using Sent = decltype(asSent(std::declval<Result>()));
        DBUSHelper::handleAdapterMethod<Sent>(in, out, decode, [&run] { return asSent(run()); });
    }
}

// The same for one operation of `target`, which says by itself what is to be decoded.
template <class Operation>
void relayCall(typename OperationTraits<Operation>::Interface& target, Operation operation, std::stringstream& in,
               std::stringstream& out) {
    relayCall<typename OperationTraits<Operation>::Arguments>(in, out, [&target, operation](auto&&... argument) {
        return (target.*operation)(std::forward<decltype(argument)>(argument)...);
    });
}

} // namespace DAX::DAXIPC::DBUSLowLevel
