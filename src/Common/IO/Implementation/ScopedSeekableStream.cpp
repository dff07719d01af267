#include "Common/IO/ScopedSeekableStream.h"

#include <utility>

namespace DAX::Common::IO {

ScopedSeekableStream::ScopedSeekableStream(std::shared_ptr<ISeekableStream> stream, streamsize_t start,
                                           streamsize_t size)
    : ScopedView(std::move(stream), start, size) {}

} // namespace DAX::Common::IO
