#pragma once

#include <array>
#include <tuple>
#include <type_traits>

#include "DAXCommon/ServiceClientPriority.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// A method of the bus: what it is called, and what its request and its reply hold. ServiceMethods.h and CoreMethods.h
// have all of them. The ends of the bus read and write by the types; who explains a message reads the names as well.

// An archive with these values, in their order. The names are for people and do not travel.
template <class... Values>
struct Archive {
    using Tuple = std::tuple<Values...>;

    template <class... Names>
    explicit constexpr Archive(Names... valueNames) : names{valueNames...} {
        static_assert(sizeof...(Names) == sizeof...(Values), "each value has a name");
    }

    std::array<const char*, sizeof...(Values)> names;
};

// Nothing at all, not even the header of an archive.
struct NoArchive {
    using Tuple = std::tuple<>;
};

// RequestArchive and ReplyArchive are Archive<...> or NoArchive.
template <class RequestArchive, class ReplyArchive>
struct Method {
    using Request = RequestArchive;
    using Reply = ReplyArchive;

    const char* name;
    Request request;
    Reply reply;
};

template <class Request, class Reply>
Method(const char*, Request, Reply) -> Method<Request, Reply>;

namespace Detail {

// Of a tuple of values: void, the one value, or the tuple of several.
template <class Tuple>
struct OnlyValue {
    using Type = Tuple;
};
// No value.
template <>
struct OnlyValue<std::tuple<>> {
    using Type = void;
};
// One value.
template <class Value>
struct OnlyValue<std::tuple<Value>> {
    using Type = Value;
};

} // namespace Detail

// The arguments as a tuple. A method is passed as a template argument, so that no process holds the names that it does
// not use.
template <const auto& METHOD>
using ArgumentsOf = typename std::decay_t<decltype(METHOD)>::Request::Tuple;

// What the reply holds: void, the one value, or a tuple of several.
template <const auto& METHOD>
using ResultOf = typename Detail::OnlyValue<typename std::decay_t<decltype(METHOD)>::Reply::Tuple>::Type;

// A priority is sent as an unsigned number with the same bits; every other result is sent as it is.
template <class R>
R asSent(R result) {
    return result;
}
inline unsigned int asSent(DAXCommon::ServiceClientPriority priority) {
    return static_cast<unsigned int>(static_cast<int>(priority));
}

} // namespace DAX::DAXIPC::DBUSLowLevel
