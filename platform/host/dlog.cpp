#include "dlog.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "Border.h"
#include "DlogSink.h"

namespace {

constexpr int FAILED = -1;

int writeFormatted(const KovanHost::DlogSink& sink, int priority, const char* tag, const char* format, va_list values) {
    char buffer[1024];
    va_list again; // the first pass uses the values up
    va_copy(again, values);
    const int length = std::vsnprintf(buffer, sizeof(buffer), format, values);
    std::string longText;
    if (length >= static_cast<int>(sizeof(buffer))) {
        longText.resize(static_cast<std::size_t>(length));
        std::vsnprintf(longText.data(), longText.size() + 1, format, again);
    }
    va_end(again);
    const char* const text = longText.empty() ? buffer : longText.c_str();
    return length >= 0 && sink.write(priority, tag, text) ? length : FAILED;
}

} // namespace

int __dlog_print(int, int priority, const char* tag, const char* format, ...) {
    const int callersError = errno; // to log must not change what the caller may look at next
    va_list values;
    va_start(values, format);
    const int result = KovanHost::atBorder(FAILED, [&] {
        const KovanHost::DlogSink& sink = KovanHost::DlogSink::get();
        return sink.kind() == KovanHost::DlogSink::Kind::NONE
                   ? 0
                   : writeFormatted(sink, priority, tag == nullptr ? "" : tag, format, values);
    });
    va_end(values);
    errno = callersError;
    return result;
}
