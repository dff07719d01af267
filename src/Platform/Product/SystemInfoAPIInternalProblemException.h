#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Platform {

// The platform does not tell a fact about the device. Carries which as errinfo_description. No GenericException.
class SystemInfoAPIInternalProblemException : public virtual std::exception, public virtual boost::exception {};

} // namespace DAX::Platform
