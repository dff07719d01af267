#pragma once

#include <ostream>

#include <boost/archive/xml_oarchive.hpp>

namespace DAX::Common::XML {

// Writes what boost::archive::xml_oarchive writes. The library's own archive ends the document in its destructor, where
// a full disk would end the process; here finish() does. The stream outlives this object.
class XMLOutput : public boost::archive::xml_oarchive {
public:
    // Throws archive_exception (output_stream_error), as all writing does, when the stream takes nothing.
    explicit XMLOutput(std::ostream& file);

    // Ends the document and hands it over to the system. Without it the document is not complete; the library adds an
    // empty line when the object goes.
    void finish();

private:
    std::ostream& m_file;
};

} // namespace DAX::Common::XML
