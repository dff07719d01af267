#pragma once

#include <sstream>
#include <string>

#include <boost/exception_ptr.hpp>

namespace DAX::DAXIPC::DBUSLowLevel {

// Carries an exception over the bus: its type by a name, with its support codes and its diagnostic text. Every
// exception without a name of its own travels as DAXUnknownException.
class StandardExceptionHandler {
public:
    // Writes the name and the archive of `exception`. Only inside a catch block, because it reads the current
    // exception. Throws archive_exception when the stream cannot be written, and lets out an exception nested in it
    // that is no boost::exception.
    static void wrapException(const boost::exception_ptr& exception, std::string& name, std::stringstream& stream);

    // The name alone.
    static const char* wireNameOf(const boost::exception& exception);

    // Throws the exception that `name` and the archive stand for, or archive_exception when the archive cannot be read.
    // A name that is not in the table is an assertion failure: the two ends were built from different tables.
    [[noreturn]] static void unwrapException(const std::string& method, const std::string& name,
                                             std::stringstream& stream);
};

} // namespace DAX::DAXIPC::DBUSLowLevel
