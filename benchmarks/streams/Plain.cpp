#include "streams/Plain.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <boost/crc.hpp>
#include <unistd.h>

namespace Streams {

namespace {

using Crc = boost::crc_optimal<32, 0x04C11DB7, 0xFFFFFFFF, 0xFFFFFFFF, true, true>;

const std::size_t MAGIC_SIZE = 10;
const std::size_t TRAILER_SIZE = 14;

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

void require(bool condition) {
    if (!condition) {
        throw std::runtime_error("the plain file failed");
    }
}

void write(std::FILE* file, const void* data, std::size_t size) {
    require(std::fwrite(data, 1, size, file) == size);
}

} // namespace

void writePlainly(const std::string& path, const std::vector<unsigned char>& data, std::size_t chunkSize) {
    const File file(std::fopen(path.c_str(), "wb"));
    require(file != nullptr);
    Crc crc;
    for (std::size_t done = 0; done < data.size(); done += chunkSize) {
        const std::size_t size = std::min(chunkSize, data.size() - done);
        write(file.get(), data.data() + done, size);
        crc.process_bytes(data.data() + done, size);
    }
    const std::uint32_t sum = crc.checksum();
    write(file.get(), "CHECKSUMED", MAGIC_SIZE);
    write(file.get(), &sum, sizeof(sum));
    require(std::fflush(file.get()) == 0 && fsync(fileno(file.get())) == 0);
}

bool verifyPlainly(const std::string& path, std::size_t chunkSize) {
    const File file(std::fopen(path.c_str(), "rb"));
    require(file != nullptr && std::fseek(file.get(), 0, SEEK_END) == 0);
    std::size_t left = static_cast<std::size_t>(std::ftell(file.get())) - TRAILER_SIZE;
    require(std::fseek(file.get(), 0, SEEK_SET) == 0);
    std::vector<unsigned char> chunk(chunkSize);
    Crc crc;
    while (left != 0) {
        const std::size_t size = std::fread(chunk.data(), 1, std::min(chunkSize, left), file.get());
        require(size != 0);
        crc.process_bytes(chunk.data(), size);
        left -= size;
    }
    char magic[MAGIC_SIZE];
    std::uint32_t sum = 0;
    require(std::fread(magic, 1, sizeof(magic), file.get()) == sizeof(magic));
    require(std::fread(&sum, 1, sizeof(sum), file.get()) == sizeof(sum));
    return std::memcmp(magic, "CHECKSUMED", sizeof(magic)) == 0 && sum == crc.checksum();
}

} // namespace Streams
