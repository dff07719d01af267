#include "Common/DBUSWrapper/Implementation/ReusedStream.h"

namespace DAX::Common::DBUSWrapper {
namespace {

const std::streamoff LONGEST_KEPT_TEXT = 64L * 1024;

} // namespace

ReusedStream::Loan::Loan(ReusedStream& owner) : m_owner(owner) {
    if (!m_owner.m_stream) {
        m_owner.m_stream.emplace();
    }
}

ReusedStream::Loan::~Loan() {
    if (!m_owner.isAsNew()) {
        m_owner.m_stream.reset();
        return;
    }
    m_owner.m_stream->str({});
    m_owner.m_stream->clear();
}

// A stream that was not left in its first state is not kept. The length comes from the write position, since str()
// would copy the text.
bool ReusedStream::isAsNew() const {
    const std::ios_base::fmtflags flags = std::ios_base::skipws | std::ios_base::dec;
    const std::streamsize precision = 6;
    if (m_stream->exceptions() != std::ios_base::goodbit || m_stream->flags() != flags ||
        m_stream->precision() != precision || m_stream->width() != 0 || m_stream->fill() != ' ') {
        return false;
    }
    const std::streamoff length = m_stream->rdbuf()->pubseekoff(0, std::ios_base::end, std::ios_base::out);
    return length >= 0 && length <= LONGEST_KEPT_TEXT;
}

} // namespace DAX::Common::DBUSWrapper
