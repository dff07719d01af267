#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Core::CoreExceptions {

class CoreException : public virtual std::exception, public virtual boost::exception {};

// No connection to the bus, on the way to the core. Carries its cause as boost::errinfo_nested_exception, and no text.
class ErrorConnectingToCoreException : public CoreException {};

} // namespace DAX::Core::CoreExceptions
