#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"

#include <cstddef>
#include <ios>
#include <locale>
#include <type_traits>

namespace DAX::DAXIPC::DBUSLowLevel {
namespace {

static_assert(std::is_same<std::size_t, unsigned long>::value,
              "a length is told from all other numbers of an archive by its type alone");

// The slot in which a stream keeps its buffer for the facet, which sees only the stream's base class.
int messageIndex() {
    static const int index = std::ios_base::xalloc();
    return index;
}

// Reads numbers as usual, but checks lengths. Lengths of strings and counts of collections are the only values of type
// unsigned long in an archive; a length of n needs at least a blank and n more bytes after it.
class LengthCheckingNumGet : public std::num_get<char> {
protected:
    iter_type do_get(iter_type begin, iter_type end, std::ios_base& stream, std::ios_base::iostate& state,
                     unsigned long& value) const override {
        const iter_type next = std::num_get<char>::do_get(begin, end, stream, state, value);
        if (value != 0 && value >= bytesLeft(stream)) {
            value = 0;
            state |= std::ios_base::failbit;
        }
        return next;
    }

private:
    static unsigned long bytesLeft(std::ios_base& stream) {
        auto* const message = static_cast<std::streambuf*>(stream.pword(messageIndex()));
        const std::streamsize available = message != nullptr ? message->in_avail() : 0;
        return available > 0 ? static_cast<unsigned long>(available) : 0;
    }
};

// The classic locale except for lengths, so that the global locale cannot change how a message is read. The stream
// keeps it.
std::istream& withLengthsChecked(std::istream& message) {
    static const std::locale locale(std::locale::classic(), new LengthCheckingNumGet);
    if (message.getloc() != locale) {
        message.imbue(locale);
    }
    message.pword(messageIndex()) = message.rdbuf();
    // Asking a string stream for its position makes it take notice of all that was written to it; in_avail() then
    // counts that.
    message.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    return message;
}

} // namespace

ArchiveInput::ArchiveInput(std::istream& message)
    : m_archive(withLengthsChecked(message), boost::archive::no_codecvt) {}

} // namespace DAX::DAXIPC::DBUSLowLevel
