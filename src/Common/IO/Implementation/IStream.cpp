#include "Common/IO/IStream.h"

#include <algorithm>
#include <vector>

#include "Utility/Utils/SafePlus.h"

namespace DAX::Common::IO {

std::string IStream::readAllText(std::size_t chunkSize) {
    std::vector<std::uint8_t> text;
    std::size_t length = 0;
    for (;;) {
        text.resize(Utils::safePlus(length, chunkSize));
        const std::size_t bytesRead = readChunk(text.data() + length, chunkSize);
        if (bytesRead == 0) {
            return std::string(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
        }
        length += bytesRead;
    }
}

std::size_t IZeroCopyStream::readChunk(std::uint8_t* data, std::size_t size) {
    std::size_t bytesRead = 0;
    const std::uint8_t* chunk = nullptr;
    std::size_t chunkSize = 0;
    while (bytesRead < size && nextChunk(&chunk, &chunkSize)) {
        const std::size_t taken = std::min(size - bytesRead, chunkSize);
        std::copy_n(chunk, taken, data + bytesRead);
        bytesRead += taken;
        giveBack(chunkSize - taken);
    }
    return bytesRead;
}

} // namespace DAX::Common::IO
