#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Platform {

// A read or a write of the settings store failed. Carries the message text as errinfo_stream_text and the store's
// result as errinfo_errorcode. No GenericException.
class VConfException : public virtual std::exception, public virtual boost::exception {};

} // namespace DAX::Platform
