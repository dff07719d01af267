#pragma once

#include "Common/IO/ScopedView.h"

namespace DAX::Common::IO {

// A part of a seekable stream, see ScopedView. `start` and `size` in bytes.
class ScopedSeekableStream : public ScopedView<ISeekableStream> {
public:
    ScopedSeekableStream(std::shared_ptr<ISeekableStream> stream, streamsize_t start, streamsize_t size);
};

} // namespace DAX::Common::IO
