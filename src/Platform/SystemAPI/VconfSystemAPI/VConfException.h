#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Platform {

// A read or a write of the settings store failed. Carries the message as errinfo_stream_text and the store's result as
// errinfo_errorcode. It is not a GenericException.
class VConfException : public virtual std::exception, public virtual boost::exception {};

} // namespace DAX::Platform
