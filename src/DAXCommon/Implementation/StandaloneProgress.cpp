#include <istream>
#include <locale>
#include <sstream>

#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/DAXCommonUtils.h"

namespace DAX::DAXCommon {

namespace {

constexpr char SEPARATOR = '|';

bool atEnd(std::istream& stream) {
    return stream.peek() == std::istream::traits_type::eof();
}

// False unless the rest of the stream has exactly this form.
bool read(std::istream& stream, int& progress, boost::optional<float>& detail) {
    if (!(stream >> progress)) {
        return false;
    }
    if (atEnd(stream)) {
        return true;
    }
    char separator = 0;
    float number = 0;
    if (!(stream >> separator >> number) || separator != SEPARATOR || !atEnd(stream)) {
        return false;
    }
    detail = number;
    return true;
}

} // namespace

std::string DAXCommonUtils::packStandaloneProgressValue(int progress, boost::optional<float> detail) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << progress;
    if (detail) {
        stream << SEPARATOR << *detail;
    }
    return stream.str();
}

bool DAXCommonUtils::unpackStandaloneProgressValue(const std::string& text, int& progress,
                                                   boost::optional<float>& detail) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    stream.unsetf(std::ios::skipws);
    int readProgress = 0;
    boost::optional<float> readDetail;
    if (!read(stream, readProgress, readDetail)) {
        DAX_LOG(ERR) << "Unpacking progess value from " << text << " failed!";
        return false;
    }
    progress = readProgress;
    detail = readDetail;
    return true;
}

} // namespace DAX::DAXCommon
