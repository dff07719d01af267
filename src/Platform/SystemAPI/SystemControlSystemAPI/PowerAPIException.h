#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Platform {

// The device refused or failed a request about its power. Carries what failed as errinfo_description and the device's
// result as errinfo_errorcode. No GenericException.
class PowerAPIException : public virtual std::exception, public virtual boost::exception {};

} // namespace DAX::Platform
