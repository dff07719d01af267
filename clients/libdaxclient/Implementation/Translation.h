#pragma once

#include "libdaxclient/Implementation/Context.h"
#include "libdaxclient/Implementation/LogScope.h"

namespace dax::detail {

// Throws the exception that is being handled as the one of <dax/client.h> that stands for it. Only inside a catch
// block.
[[noreturn]] void throwTranslated();

// Every call of the service goes through this: it logs to the client, and throws what <dax/client.h> names.
template <class Call>
auto callService(const Context& context, const Call& call) {
    const LogScope log(context.log);
    try {
        return call();
    } catch (...) {
        throwTranslated();
    }
}

} // namespace dax::detail
