#pragma once

#include <exception>

#include <boost/exception/exception.hpp>
#include <boost/exception/info.hpp>

namespace serializers {

// The root of the serializers' exceptions.
class serialization_exception : public virtual std::exception, public virtual boost::exception {};

// A value does not fit in the bytes, or the type, that it is to be stored in.
class lossy_conversion : public virtual serialization_exception {};

struct tag_description {}; // what went wrong, in words
using errinfo_description = boost::error_info<tag_description, const char*>;

} // namespace serializers
