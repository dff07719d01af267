#include "Common/XML/XMLOutput.h"

#include <locale>

namespace DAX::Common::XML {
namespace {

// The global locale must not change how numbers are written.
std::ostream& inClassicLocale(std::ostream& file) {
    file.imbue(std::locale::classic());
    return file;
}

} // namespace

XMLOutput::XMLOutput(std::ostream& file)
    : xml_oarchive(inClassicLocale(file), boost::archive::no_header), m_file(file) {
    init();
}

void XMLOutput::finish() {
    windup();
    if (!m_file.flush()) {
        throw boost::archive::archive_exception(boost::archive::archive_exception::output_stream_error);
    }
}

} // namespace DAX::Common::XML
