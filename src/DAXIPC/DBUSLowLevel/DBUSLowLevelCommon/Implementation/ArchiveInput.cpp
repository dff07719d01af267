#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"

#include <cstddef>
#include <ios>
#include <locale>
#include <type_traits>

namespace DAX {
namespace DAXIPC {
namespace DBUSLowLevel {
namespace {

static_assert(std::is_same<std::size_t, unsigned long>::value,
              "a length is told from all other numbers of an archive by its type alone");

// Reads numbers as usual. Lengths of strings and counts of collections are the only values of type unsigned long in an
// archive; one of n needs at least a blank and n more bytes behind it.
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
        const std::streamsize available = dynamic_cast<std::ios&>(stream).rdbuf()->in_avail();
        return available > 0 ? static_cast<unsigned long>(available) : 0;
    }
};

// Classic but for the lengths, so that no global locale can change how a message is read. The archive adds its own
// codecvt facet to the locale of its stream and leaves the rest as it is.
std::istream& withLengthsChecked(std::istream& message) {
    static const std::locale locale(std::locale::classic(), new LengthCheckingNumGet);
    message.imbue(locale);
    // Asked where it stands, a string stream takes notice of all that was written to it; in_avail() then counts that.
    message.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    return message;
}

} // namespace

ArchiveInput::ArchiveInput(std::istream& message) : m_archive(withLengthsChecked(message)) {}

} // namespace DBUSLowLevel
} // namespace DAXIPC
} // namespace DAX
