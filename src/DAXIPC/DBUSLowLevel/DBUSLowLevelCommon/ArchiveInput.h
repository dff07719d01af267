#pragma once

#include <istream>

#include <boost/archive/text_iarchive.hpp>

namespace DAX::DAXIPC::DBUSLowLevel {

// The one door through which the bytes of a message are read as an archive. The stream holds the whole message in its
// buffer, as a string stream does, and outlives this object.
//
// A message comes from another process. A length or a count that it declares beyond its own size is refused before any
// memory is taken for it: it throws the library's archive_exception (input_stream_error), as every unreadable number
// does. So does a message without a valid header, at the construction.
class ArchiveInput {
public:
    explicit ArchiveInput(std::istream& message);

    boost::archive::text_iarchive& archive() { return m_archive; }

    template <class T>
    ArchiveInput& operator>>(T& value) {
        m_archive >> value;
        return *this;
    }

private:
    boost::archive::text_iarchive m_archive;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
