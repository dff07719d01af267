#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Core::CoreExceptions {

// The root of the failures on the way to the update core.
class CoreException : public virtual std::exception, public virtual boost::exception {};

// There is no connection to the bus. Carries its cause as boost::errinfo_nested_exception, and no text.
class ErrorConnectingToCoreException : public CoreException {};

} // namespace DAX::Core::CoreExceptions
