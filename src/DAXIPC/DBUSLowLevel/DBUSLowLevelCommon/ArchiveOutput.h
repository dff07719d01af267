#pragma once

#include <ostream>

#include <boost/archive/text_oarchive.hpp>

namespace DAX::DAXIPC::DBUSLowLevel {

// The archive that a message carries. The stream is one in memory and outlives this object; it holds the archive's
// header at once, and the line end that closes an archive when this object has gone.
//
// Such a stream converts no characters, so the library need not give it a locale that says so: the bytes are the same,
// and a stream takes long to change its locale.
class ArchiveOutput : public boost::archive::text_oarchive {
public:
    explicit ArchiveOutput(std::ostream& message) : text_oarchive(message, boost::archive::no_codecvt) {}
};

} // namespace DAX::DAXIPC::DBUSLowLevel
