// Explains any bytes as any archive. They are broken exactly when the code of the system's own ends refuses them, and
// what is told of them lies within them.
#include <cstdio>
#include <cstdlib>

#include "DAXIPC/DBUSLowLevel/Decoder/ArchiveDecoder.h"
#include "DecoderInput.h"
#include "support/ArchiveOracle.h"

namespace {

using namespace DAX;
using DAXIPC::DBUSLowLevel::DecodedArchive;
using DAXIPC::DBUSLowLevel::DecodedValue;

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

void checkPlace(const DecodedValue& value, std::size_t begin, std::size_t end) {
    if (value.type == nullptr) {
        return; // the archive broke before it
    }
    require(begin <= value.offset && value.offset + value.length <= end, "a value outside of what it is in");
    for (const DecodedValue& child : value.children) {
        checkPlace(child, value.offset, end);
    }
}

// Whether the system's own ends read it; they have no place for a hostile point in time, whose sum overflows.
bool isReadByTheSystem(const std::string& golden, const std::string& archive, bool otherwise) {
    bool isRead = otherwise;
    Tests::forEachArchive([&](const char* side, const char* name, bool isRequest, const auto& read) {
        if (golden == std::string(side) + "/" + name + (isRequest ? ".request" : ".reply") &&
            std::string(name) != "getLastSearchingForUpgradeDate") {
            isRead = read(archive);
        }
    });
    return isRead;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("KOVAN_DLOG", "none", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const auto& choices = Fuzz::decoderChoices();
    const Fuzz::DecoderChoice& choice = choices[data[0] % choices.size()];
    const std::string bytes(data + 1, data + size);
    const DecodedArchive archive = DAXIPC::DBUSLowLevel::decodeArchive(*choice.description, bytes);
    require(archive.end <= bytes.size(), "an end behind the bytes");
    for (const DecodedValue& value : archive.values) {
        checkPlace(value, 0, bytes.size());
    }
    if (archive.breakage) {
        require(archive.breakage->offset <= bytes.size(), "a breakage behind the bytes");
        require(!archive.breakage->reason.empty(), "a breakage without a reason");
    }
    const bool isWhole = !archive.breakage;
    require(isReadByTheSystem(choice.golden, bytes, isWhole) == isWhole, "the decoder and the system disagree");
    return 0;
}
