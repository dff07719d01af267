#pragma once

#include <istream>

#include <boost/archive/xml_iarchive.hpp>

namespace DAX::Common::XML {

// Reads an XML archive; every XML file is read through this class. It reads what boost::archive::xml_oarchive writes
// and throws what boost::archive::xml_iarchive throws; the constructor throws for a bad header. Elements are read in
// the order in which they were written. The stream must outlive this object. One thread at a time.
//
// The file may come from anybody. Given a bad file, the library's own archive reads beyond the end of the names that it
// compares, and ends the process when the end of the document is missing. This class does neither, and ignores what
// follows the last element that it is asked for.
class XMLInput : public boost::archive::xml_iarchive_impl<XMLInput> {
public:
    explicit XMLInput(std::istream& file);
    ~XMLInput() override;

private:
    friend class boost::archive::basic_xml_iarchive<XMLInput>;
    friend class boost::archive::detail::interface_iarchive<XMLInput>;
    friend class boost::archive::load_access;

    // The library calls these at the beginning and the end of every element.
    void load_start(const char* name);
    void load_end(const char* name);

    unsigned int m_depth = 0;
};

} // namespace DAX::Common::XML
