#include "Common/IO/CRCSink.h"
#include "DAXCommon/DAXCommonUtils.h"
#include "DAXCommon/Encoding.h"
#include "serializers/binary/little_endian.h"

namespace DAX::DAXCommon {

std::string DAXCommonUtils::calculateCrcString(const unsigned char* data, unsigned long size) {
    Common::IO::CRCSink<Common::IO::Crc32> sink;
    sink.writeChunk(data, size);
    const auto sum = serializers::binary::little_endian<4>::format(sink.getCRC32());
    return Encoding::binToHex(sum.data(), sum.size());
}

std::string DAXCommonUtils::getTransactionIdForUpgrade(const std::vector<unsigned char>& bytes) {
    return calculateCrcString(bytes.data(), bytes.size());
}

} // namespace DAX::DAXCommon
