#pragma once

#include <sstream>
#include <string>

#include <boost/exception/info.hpp>
#include <boost/filesystem/path.hpp>

namespace DAX::Common::Utils {

// The tags that an exception of this system can carry.
struct tag_errinfo_stream {};      // the free text of the throw site
struct tag_errinfo_string {};      // a string argument of the failed operation
struct tag_errinfo_description {}; // a description text
struct tag_errinfo_rethrows {};    // the texts added on the way up, newest first, one per line
struct tag_errinfo_path {};        // the file concerned
struct tag_errinfo_subject {};     // the subject of the failed operation
struct tag_errinfo_errorcode {};   // a numeric error code
struct tag_errinfo_supportcode {}; // the support code shown to users

using errinfo_stream_text = boost::error_info<tag_errinfo_stream, std::string>;
using errinfo_string = boost::error_info<tag_errinfo_string, std::string>;
using errinfo_description = boost::error_info<tag_errinfo_description, std::string>;
using errinfo_rethrows = boost::error_info<tag_errinfo_rethrows, std::string>;
using errinfo_path = boost::error_info<tag_errinfo_path, boost::filesystem::path>;
using errinfo_subject = boost::error_info<tag_errinfo_subject, std::string>;
using errinfo_errorcode = boost::error_info<tag_errinfo_errorcode, int>;
using errinfo_supportcode = boost::error_info<tag_errinfo_supportcode, std::string>;

// Joins all arguments, in order, to one text.
template <class... Args>
errinfo_stream_text errinfo_stream(Args&&... args) {
    std::ostringstream text;
    (text << ... << std::forward<Args>(args));
    return errinfo_stream_text(text.str());
}

// The text " errno=<number> (<description>)" with the description of strerror_r, and the same as a tag. Any thread.
std::string get_string_from_errno(int number);
errinfo_stream_text errinfo_errno(int number);

// The support codes of an exception and of those nested in it, joined by "-", without the empty ones. A nested
// exception that is no boost::exception is thrown out of this function.
std::string get_combined_supportcode(boost::exception& exception);

} // namespace DAX::Common::Utils
