#include "libdaxclient/Implementation/LogScope.h"

namespace dax::detail {

namespace {

thread_local const LogCallback* callbackOfThisThread = nullptr;

} // namespace

LogScope::LogScope(const LogCallback& callback) : m_outer(callbackOfThisThread) {
    callbackOfThisThread = callback ? &callback : nullptr;
}

LogScope::~LogScope() {
    callbackOfThisThread = m_outer;
}

const LogCallback* LogScope::current() {
    return callbackOfThisThread;
}

} // namespace dax::detail
