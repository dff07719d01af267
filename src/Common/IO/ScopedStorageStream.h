#pragma once

#include "Common/IO/ScopedView.h"

namespace DAX::Common::IO {

// A part of a storage stream, see ScopedView; it opens and closes that stream. `start` and `size` in bytes.
class ScopedStorageStream : public ScopedView<IStorageStream> {
public:
    ScopedStorageStream(std::shared_ptr<IStorageStream> stream, streamsize_t start, streamsize_t size);

    void open() override;
    void close() override;
    bool isOpened() override;
    bool alreadyClosed() override;
};

} // namespace DAX::Common::IO
