#include "Common/XML/XMLInput.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

#include <boost/archive/archive_exception.hpp>
#include <boost/archive/impl/archive_serializer_map.ipp>
#include <boost/archive/impl/basic_xml_iarchive.ipp>
#include <boost/archive/impl/xml_iarchive_impl.ipp>
#include <boost/archive/xml_archive_exception.hpp>

namespace boost::archive {

template class detail::archive_serializer_map<DAX::Common::XML::XMLInput>;
template class basic_xml_iarchive<DAX::Common::XML::XMLInput>;
template class xml_iarchive_impl<DAX::Common::XML::XMLInput>;

} // namespace boost::archive

namespace DAX::Common::XML {

using boost::archive::archive_exception;
using boost::archive::xml_archive_exception;

namespace {

// The global locale must not change how numbers are read.
std::istream& inClassicLocale(std::istream& file) {
    file.imbue(std::locale::classic());
    return file;
}

bool hasQuotedTextLongerThan(std::size_t limit, const std::string& tag) {
    std::size_t closing = 0;
    for (std::size_t opening = tag.find('"'); opening != std::string::npos; opening = tag.find('"', closing + 1)) {
        closing = tag.find('"', opening + 1);
        if (closing == std::string::npos) {
            return false;
        }
        if (closing - opening - 1 > limit) {
            return true;
        }
    }
    return false;
}

// The first three tags: the declaration, the document type and the outermost tag. The library compares its own
// signature with as many bytes as the signature of the file has, so a longer one is refused here.
std::string checkedHeader(std::istream& file) {
    static const std::size_t TAGS = 3;
    std::string header;
    std::string tag;
    for (std::size_t count = 0; count < TAGS && std::getline(file, tag, '>'); ++count) {
        header += tag + (file.eof() ? "" : ">");
    }
    if (hasQuotedTextLongerThan(std::strlen(boost::archive::BOOST_ARCHIVE_SIGNATURE()), tag)) {
        throw archive_exception(archive_exception::invalid_signature);
    }
    return header;
}

} // namespace

XMLInput::XMLInput(std::istream& file) : xml_iarchive_impl(inClassicLocale(file), boost::archive::no_header) {
    if (!is) {
        throw xml_archive_exception(xml_archive_exception::xml_archive_parsing_error);
    }
    std::istringstream header(checkedHeader(is));
    gimpl->init(header);
    if (gimpl->rv.version > std::numeric_limits<std::uint_least16_t>::max()) {
        throw archive_exception(archive_exception::unsupported_version);
    }
    set_library_version(boost::serialization::library_version_type(gimpl->rv.version));
}

XMLInput::~XMLInput() = default;

// An element without a name has no tags.
void XMLInput::load_start(const char* name) {
    if (name == nullptr) {
        return;
    }
    if (!gimpl->parse_start_tag(is)) {
        throw archive_exception(archive_exception::input_stream_error);
    }
    ++m_depth;
}

// The name of the outermost element is not compared.
void XMLInput::load_end(const char* name) {
    if (name == nullptr) {
        return;
    }
    if (!gimpl->parse_end_tag(is)) {
        throw archive_exception(archive_exception::input_stream_error);
    }
    if (--m_depth > 0 && gimpl->rv.object_name != name) {
        throw xml_archive_exception(xml_archive_exception::xml_archive_tag_mismatch, name);
    }
}

} // namespace DAX::Common::XML
