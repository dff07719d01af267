#pragma once

#include <functional>
#include <string>

#include "dax/client.h"

namespace dax::detail {

using LogCallback = std::function<void(LogLevel, const std::string&)>;

// While it lives, what its thread logs goes to one client's callback. Scopes nest: a callback of the client may call
// another client.
class LogScope {
public:
    // Borrows the callback, which may be empty.
    explicit LogScope(const LogCallback& callback);
    LogScope(const LogScope&) = delete;
    LogScope& operator=(const LogScope&) = delete;
    ~LogScope();

    // The callback of the calling thread's scope. Null when it has none, or an empty one.
    static const LogCallback* current();

private:
    const LogCallback* const m_outer;
};

} // namespace dax::detail
