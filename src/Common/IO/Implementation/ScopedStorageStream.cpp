#include "Common/IO/ScopedStorageStream.h"

#include <utility>

namespace DAX::Common::IO {

ScopedStorageStream::ScopedStorageStream(std::shared_ptr<IStorageStream> stream, streamsize_t start, streamsize_t size)
    : ScopedView(std::move(stream), start, size) {}

void ScopedStorageStream::open() {
    stream().open();
    ScopedView::openIfNotOpened();
}

void ScopedStorageStream::close() {
    stream().close();
}

bool ScopedStorageStream::isOpened() {
    return stream().isOpened();
}

bool ScopedStorageStream::alreadyClosed() {
    return stream().alreadyClosed();
}

} // namespace DAX::Common::IO
