#include "DAXIPC/DBUSLowLevel/Decoder/Implementation/ArchiveScanner.h"

#include <algorithm>
#include <locale>

namespace DAX::DAXIPC::DBUSLowLevel {

namespace {

bool isBlank(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

// What stands there, for a message: up to the next blank, without what does not print.
std::string excerpt(std::string_view bytes) {
    const std::size_t most = 20;
    std::string text;
    for (const char byte : bytes) {
        if (isBlank(byte)) {
            break;
        }
        if (text.size() == most) {
            return text + "...";
        }
        text += byte > ' ' && byte < 0x7f ? byte : '?';
    }
    return text;
}

bool looksLikeNumber(const std::string& text) {
    const std::size_t sign = text.empty() || (text[0] != '-' && text[0] != '+') ? 0 : 1;
    return text.size() > sign && text[sign] >= '0' && text[sign] <= '9';
}

} // namespace

ArchiveScanner::Buffer::Buffer(std::string_view bytes) {
    char* const begin = const_cast<char*>(bytes.data()); // a stream's buffer can be written, but nobody does
    setg(begin, begin, begin + bytes.size());
}

ArchiveScanner::ArchiveScanner(std::string_view bytes) : m_bytes(bytes), m_buffer(bytes), m_stream(&m_buffer) {
    m_stream.imbue(std::locale::classic());
}

std::size_t ArchiveScanner::nextToken() const {
    const std::string_view rest = m_bytes.substr(offset());
    return offset() + static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), isBlank) - rest.begin());
}

std::size_t ArchiveScanner::length(const char* what) {
    const std::size_t begin = nextToken();
    const auto value = number<unsigned long>(what);
    if (value != 0 && value >= bytesLeft()) {
        const std::size_t blank = bytesLeft() > 0 ? 1 : 0;
        throw Broken(begin, std::string(what) + " of " + std::to_string(value) + ", but only " +
                                std::to_string(bytesLeft() - blank) + " bytes follow");
    }
    return value;
}

std::string_view ArchiveScanner::text(const char* what) {
    const std::size_t size = length(what);
    m_stream.get(); // at the end of the bytes it makes the next number fail, as in an archive
    const std::string_view text = m_bytes.substr(offset(), size);
    m_stream.ignore(static_cast<std::streamsize>(size));
    return text;
}

void ArchiveScanner::fail(std::size_t begin, const char* what) const {
    const std::string found = excerpt(m_bytes.substr(begin));
    if (found.empty()) {
        throw Broken(m_bytes.size(), std::string("the archive ends before ") + what);
    }
    throw Broken(begin, "\"" + found + "\" is no " + (looksLikeNumber(found) ? "valid " : "") + what);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
