#pragma once

#include <istream>

#include <boost/archive/xml_iarchive.hpp>

namespace DAX::Common::XML {

// The one door through which a file is read as an XML archive. It reads what boost::archive::xml_oarchive writes, and
// throws what boost::archive::xml_iarchive throws, at the construction when the header is bad; elements come in their
// order. The stream outlives this object.
//
// Anybody may have written the file. The library's own archive, given a bad one, reads behind the end of the names that
// it compares, and ends the process when the end of the document is missing; this one does neither, and does not look
// at what follows the last element that it was asked for.
class XMLInput : public boost::archive::xml_iarchive_impl<XMLInput> {
public:
    explicit XMLInput(std::istream& file);
    ~XMLInput() override;

private:
    friend class boost::archive::basic_xml_iarchive<XMLInput>;
    friend class boost::archive::detail::interface_iarchive<XMLInput>;
    friend class boost::archive::load_access;

    // The library comes here at the two ends of every element.
    void load_start(const char* name);
    void load_end(const char* name);

    unsigned int m_depth = 0;
};

} // namespace DAX::Common::XML
