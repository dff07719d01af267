#pragma once

#include <ostream>

#include <boost/archive/xml_oarchive.hpp>

namespace DAX::Common::XML {

// Writes what boost::archive::xml_oarchive writes. The library's own archive ends the document in its destructor, where
// a full disk would end the process; here, finish() does that. The stream must outlive this object. One thread at a
// time.
class XMLOutput : public boost::archive::xml_oarchive {
public:
    // Throws archive_exception (output_stream_error), as every write does, when the stream fails.
    explicit XMLOutput(std::ostream& file);

    // Ends the document and flushes the stream; throws like the constructor. Without it the document is not complete.
    // The library adds an empty line when this object is destroyed.
    void finish();

private:
    std::ostream& m_file;
};

} // namespace DAX::Common::XML
