#include "ServiceInterface/Implementation/InstallationRecord.h"

#include <boost/filesystem/path.hpp>

#include "Common/IO/ChecksumedSink.h"
#include "Common/IO/FileSink.h"
#include "Common/IO/SinkSerializer.h"
#include "Common/PlatformDependent/Sync.h"
#include "serializers/binary/little_endian.h"

namespace DAX::Service::ServiceCommon {

using namespace Common::IO;
using serializers::binary::little_endian;

namespace {

const std::size_t LENGTH_SIZE = 4;
const std::size_t CHUNK_SIZE = 1024;

// The serializer's interface is the same for loading, so it wants bytes that it could change. When it saves, it does
// not.
std::uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<std::uint8_t*>(const_cast<char*>(text.data()));
}

} // namespace

void writeInstallationRecord(const std::string& path, std::string_view text) {
    ChecksumedSink sink(std::make_shared<FileSink>(path, true), true);
    SinkSerializer serializer(&sink);
    serializer.save<little_endian<LENGTH_SIZE>>(text.size());
    serializer.serializeData(bytesOf(text), text.size());
    sink.markEndOfData();
    sink.flush();
    sink.close();
    Common::PlatformDependent::folder_sync(boost::filesystem::path(path).parent_path().string());
}

boost::optional<std::string> readInstallationRecord(ISeekableStream& data) {
    if (data.size() < LENGTH_SIZE) {
        return boost::none;
    }
    little_endian<LENGTH_SIZE>::Bytes length;
    data.read(length);
    if (little_endian<LENGTH_SIZE>::parse<std::uint32_t>(length) != data.size() - LENGTH_SIZE) {
        return boost::none;
    }
    return data.readAllText(CHUNK_SIZE);
}

} // namespace DAX::Service::ServiceCommon
