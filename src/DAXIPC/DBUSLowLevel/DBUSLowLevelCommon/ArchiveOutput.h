#pragma once

#include <ostream>

#include <boost/archive/text_oarchive.hpp>

namespace DAX::DAXIPC::DBUSLowLevel {

// Writes the archive of a message. The stream must be one in memory, and must outlive this object. It holds the header
// of the archive at once, and the final line end when this object is destroyed.
//
// A stream in memory converts no characters, so the library need not set a locale for that. The bytes are the same, and
// setting the locale of a stream is slow.
class ArchiveOutput : public boost::archive::text_oarchive {
public:
    explicit ArchiveOutput(std::ostream& message) : text_oarchive(message, boost::archive::no_codecvt) {}
};

} // namespace DAX::DAXIPC::DBUSLowLevel
