#include "Common/IO/FlagFile.h"

#include "Common/IO/FileSink.h"

namespace DAX {
namespace Common {
namespace IO {

void writeFlagFile(const boost::filesystem::path& path, const std::vector<std::string>& lines) {
    FileSink sink(path, true);
    sink.open();
    for (const std::string& line : lines) {
        const std::string chunk = line + '\n';
        sink.writeChunk(reinterpret_cast<const std::uint8_t*>(chunk.data()), chunk.size());
    }
    sink.close();
}

} // namespace IO
} // namespace Common
} // namespace DAX
