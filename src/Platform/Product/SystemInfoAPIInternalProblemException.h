#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Platform {

// The platform cannot tell a fact about the device. Carries which one as errinfo_description. It is not a
// GenericException.
class SystemInfoAPIInternalProblemException : public virtual std::exception, public virtual boost::exception {};

} // namespace DAX::Platform
