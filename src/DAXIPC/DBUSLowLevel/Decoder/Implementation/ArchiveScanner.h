#pragma once

#include <cctype>
#include <cstddef>
#include <istream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <string_view>
#include <type_traits>

namespace DAX::DAXIPC::DBUSLowLevel {

// Reads the tokens of an archive by the same operators of a stream as the archives do themselves, and knows where they
// stand. What it refuses and what it lets pass is therefore the same.
class ArchiveScanner {
public:
    // The bytes cannot be read on from here.
    struct Broken : std::runtime_error {
        Broken(std::size_t where, const std::string& reason) : runtime_error(reason), offset(where) {}
        std::size_t offset;
    };

    explicit ArchiveScanner(std::string_view bytes);

    // Behind what has been read.
    std::size_t offset() const { return m_buffer.offset(); }
    // Where the next token begins.
    std::size_t nextToken() const;
    std::size_t bytesLeft() const { return m_bytes.size() - offset(); }

    // Throws Broken, like all below.
    template <class Number>
    Number number(const char* what) {
        const std::size_t begin = nextToken();
        Number value{};
        if (!(m_stream >> value)) {
            fail(begin, what);
        }
        return value;
    }

    // A length or count, which what follows must be able to hold.
    std::size_t length(const char* what);

    // A length, a blank, and the bytes.
    std::string_view text(const char* what);

private:
    class Buffer : public std::streambuf {
    public:
        explicit Buffer(std::string_view bytes);
        std::size_t offset() const { return static_cast<std::size_t>(gptr() - eback()); }
    };

    [[noreturn]] void fail(std::size_t begin, const char* what) const;

    std::string_view m_bytes;
    Buffer m_buffer;
    std::istream m_stream;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
