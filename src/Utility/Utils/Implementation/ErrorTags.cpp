#include "Utility/Utils/ErrorTags.h"

#include <cstring>

#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/exception_ptr.hpp>

namespace DAX::Common::Utils {
namespace {

std::string nestedSupportcode(const boost::exception_ptr& nested) {
    try {
        boost::rethrow_exception(nested);
    } catch (boost::exception& exception) {
        return get_combined_supportcode(exception);
    }
}

} // namespace

std::string get_string_from_errno(int number) {
    char buffer[512] = "";
    // The GNU form, which may return a text of its own instead of `buffer`.
    const char* const description = strerror_r(number, buffer, sizeof(buffer));
    std::ostringstream text;
    text << " errno=" << number;
    if (description != nullptr) {
        text << " (" << description << ")";
    } else {
        text << " (failed to get error string: " << buffer << ")";
    }
    return text.str();
}

errinfo_stream_text errinfo_errno(int number) {
    return errinfo_stream_text(get_string_from_errno(number));
}

std::string get_combined_supportcode(boost::exception& exception) {
    std::string combined;
    if (const std::string* const own = boost::get_error_info<errinfo_supportcode>(exception)) {
        combined = *own;
    }
    if (const boost::exception_ptr* const nested = boost::get_error_info<boost::errinfo_nested_exception>(exception)) {
        const std::string inner = nestedSupportcode(*nested);
        if (!inner.empty()) {
            combined += combined.empty() ? inner : "-" + inner;
        }
    }
    return combined;
}

} // namespace DAX::Common::Utils
