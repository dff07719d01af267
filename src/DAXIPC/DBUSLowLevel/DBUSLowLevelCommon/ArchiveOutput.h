#pragma once

#include <locale>
#include <ostream>

#include <boost/archive/text_oarchive.hpp>

namespace DAX::DAXIPC::DBUSLowLevel {

// Writes the archive of a message. The stream must be one in memory, and must outlive this object. It holds the header
// of the archive at once, and the final line end when this object is destroyed.
//
// A stream in memory converts no characters, so the library need not set a locale for that. The bytes are the same, and
// setting the locale of a stream is slow. Only a stream with another locale than the classic one gets that, since the
// global locale of a program that uses our client library may group digits.
class ArchiveOutput : public boost::archive::text_oarchive {
public:
    explicit ArchiveOutput(std::ostream& message)
        : text_oarchive(withPlainNumbers(message), boost::archive::no_codecvt) {}

private:
    static std::ostream& withPlainNumbers(std::ostream& message) {
        if (message.getloc() != std::locale::classic()) {
            message.imbue(std::locale::classic());
        }
        return message;
    }
};

} // namespace DAX::DAXIPC::DBUSLowLevel
