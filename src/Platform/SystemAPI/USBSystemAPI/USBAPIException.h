#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Platform {

// The device could not list its USB storage devices. Carries what failed as errinfo_description and the device's result
// as errinfo_errorcode. It is not a GenericException.
class USBAPIException : public virtual std::exception, public virtual boost::exception {};

} // namespace DAX::Platform
