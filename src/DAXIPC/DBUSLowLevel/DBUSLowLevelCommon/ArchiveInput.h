#pragma once

#include <istream>

#include <boost/archive/text_iarchive.hpp>

namespace DAX::DAXIPC::DBUSLowLevel {

// Reads the bytes of a message as an archive; every message is read through this class. The stream must hold the whole
// message in its buffer, as a string stream does, and must outlive this object. One thread at a time.
//
// Messages come from other processes. A length or a count that is greater than the message itself is refused before any
// memory is allocated for it: it throws the library's archive_exception (input_stream_error), like every number that
// cannot be read. A message without a valid header throws in the constructor.
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
