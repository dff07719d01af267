#pragma once

#include <sstream>
#include <tuple>
#include <type_traits>
#include <utility>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSHelper.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/Method.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// What the type of an operation tells: its interface and its arguments.
template <class Operation>
struct OperationTraits;

// Every operation is a member function, so there is no other form.
template <class R, class I, class... Args>
struct OperationTraits<R (I::*)(Args...)> {
    using Interface = I;
    using Arguments = std::tuple<std::decay_t<Args>...>;
};

namespace Detail {

// What is sent as the result of a call with these arguments.
template <class Call, class Arguments, class R = decltype(std::apply(std::declval<Call>(), std::declval<Arguments>()))>
struct Sent {
    using Type = decltype(asSent(std::declval<R>()));
};
// A call without a result sends none.
template <class Call, class Arguments>
struct Sent<Call, Arguments, void> {
    using Type = void;
};
template <class Call, class Arguments>
using SentBy = typename Sent<Call, Arguments>::Type;

} // namespace Detail

// Decodes the arguments of METHOD from `in`, calls `call` with them and encodes its result, if it has one, to `out`.
// Throws archive_exception for what cannot be decoded, before the call, and what the call throws.
template <const auto& METHOD, class Call>
void relayCall(std::stringstream& in, std::stringstream& out, const Call& call) {
    using Arguments = ArgumentsOf<METHOD>;
    static_assert(std::is_same_v<Detail::SentBy<Call, Arguments>, ResultOf<METHOD>>,
                  "the result is not what the method's description says");
    Arguments arguments;
    const auto decode = [&arguments](boost::archive::text_iarchive& archive) {
        std::apply([&archive](auto&... argument) { ((archive >> argument), ...); }, arguments);
    };
    const auto run = [&] { return std::apply(call, std::move(arguments)); };
    if constexpr (std::is_void_v<ResultOf<METHOD>>) {
        ArchiveInput archive(in);
        decode(archive.archive());
        run();
    } else {
        DBUSHelper::handleAdapterMethod<ResultOf<METHOD>>(in, out, decode, [&run] { return asSent(run()); });
    }
}

// The same for one operation of `target`, which takes what the method's request holds.
template <const auto& METHOD, auto Operation>
void relayCall(typename OperationTraits<decltype(Operation)>::Interface& target, std::stringstream& in,
               std::stringstream& out) {
    static_assert(std::is_same_v<typename OperationTraits<decltype(Operation)>::Arguments, ArgumentsOf<METHOD>>,
                  "the arguments are not what the method's description says");
    relayCall<METHOD>(in, out, [&target](auto&&... argument) {
        return (target.*Operation)(std::forward<decltype(argument)>(argument)...);
    });
}

} // namespace DAX::DAXIPC::DBUSLowLevel
