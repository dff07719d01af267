#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Platform {

// The device refused a request about its power, or failed to serve it. Carries what failed as errinfo_description and
// the device's result, or the refused value, as errinfo_errorcode. It is not a GenericException.
class PowerAPIException : public virtual std::exception, public virtual boost::exception {};

} // namespace DAX::Platform
