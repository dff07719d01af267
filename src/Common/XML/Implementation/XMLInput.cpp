#include "Common/XML/XMLInput.h"

#include <cstdint>
#include <limits>
#include <locale>

#include <boost/archive/archive_exception.hpp>
#include <boost/archive/impl/archive_serializer_map.ipp>
#include <boost/archive/impl/basic_xml_iarchive.ipp>
#include <boost/archive/impl/xml_iarchive_impl.ipp>
#include <boost/archive/xml_archive_exception.hpp>

namespace boost {
namespace archive {

template class detail::archive_serializer_map<DAX::Common::XML::XMLInput>;
template class basic_xml_iarchive<DAX::Common::XML::XMLInput>;
template class xml_iarchive_impl<DAX::Common::XML::XMLInput>;

} // namespace archive
} // namespace boost

namespace DAX {
namespace Common {
namespace XML {

using boost::archive::archive_exception;
using boost::archive::xml_archive_exception;

namespace {

// No global locale changes how numbers are read.
std::istream& inClassicLocale(std::istream& file) {
    file.imbue(std::locale::classic());
    return file;
}

} // namespace

XMLInput::XMLInput(std::istream& file) : xml_iarchive_impl(inClassicLocale(file), boost::archive::no_header) {
    gimpl->init(is);
    if (gimpl->rv.version > std::numeric_limits<std::uint_least16_t>::max()) {
        throw archive_exception(archive_exception::unsupported_version);
    }
    set_library_version(boost::serialization::library_version_type(gimpl->rv.version));
}

XMLInput::~XMLInput() = default;

// Nothing but its value is there of what has no name.
void XMLInput::load_start(const char* name) {
    if (name == nullptr) {
        return;
    }
    if (!gimpl->parse_start_tag(is)) {
        throw archive_exception(archive_exception::input_stream_error);
    }
    ++m_depth;
}

// The outermost element may have any name.
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

} // namespace XML
} // namespace Common
} // namespace DAX
