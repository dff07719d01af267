#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Common::Utils {

// The general-purpose exception of the system. The other families do not derive from it; each has its own root.
class GenericException : public virtual std::exception, public virtual boost::exception {};

} // namespace DAX::Common::Utils
