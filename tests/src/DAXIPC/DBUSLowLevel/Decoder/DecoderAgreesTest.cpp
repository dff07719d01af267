// The decoder beside the code that the daemon and the clients read archives with.
#include <gtest/gtest.h>

#include "DAXIPC/DBUSLowLevel/Decoder/ArchiveDecoder.h"
#include "support/ArchiveOracle.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {
namespace {

using namespace DAXIPC::DBUSLowLevel;

// Calls check(name, description, isRead, golden bytes) for each archive.
template <class Check>
void forEachGolden(const Check& check) {
    forEachArchive([&check](const char* side, const char* name, bool isRequest, const auto& isRead) {
        const MethodDescription& method = *findMethod(std::string(side) == "core" ? Side::CORE : Side::SERVICE, name);
        const std::string file = std::string(side) + "/" + name + (isRequest ? ".request" : ".reply");
        check(file, isRequest ? method.request : method.reply, isRead, golden(file));
    });
}

template <class IsRead>
void expectAgreement(const std::string& name, const ArchiveDescription& description, const IsRead& isRead,
                     const std::string& bytes) {
    const DecodedArchive archive = decodeArchive(description, bytes);
    EXPECT_EQ(!archive.breakage, isRead(bytes))
        << name << ": " << bytes << ": " << (archive.breakage ? archive.breakage->reason : "whole");
}

TEST(DecoderAgreesWithTheArchives, WhenTheyAreCutAtEachByte) {
    forEachGolden([](const auto& name, const auto& description, const auto& isRead, const std::string& bytes) {
        for (std::size_t size = 0; size <= bytes.size(); ++size) {
            expectAgreement(name, description, isRead, bytes.substr(0, size));
        }
    });
}

TEST(DecoderAgreesWithTheArchives, WhenAnyByteIsAnother) {
    forEachGolden([](const auto& name, const auto& description, const auto& isRead, const std::string& bytes) {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            for (const char other : {'0', '1', '3', '9', '-', ' ', 'x', '\n', '\0', '.'}) {
                std::string changed = bytes;
                changed[i] = other;
                expectAgreement(name, description, isRead, changed);
            }
        }
    });
}

TEST(DecoderAgreesWithTheArchives, WhenANumberIsPutIn) {
    forEachGolden([](const auto& name, const auto& description, const auto& isRead, const std::string& bytes) {
        if (name == "service/getLastSearchingForUpgradeDate.reply") {
            return; // Boost adds up the hours of a point in time without a look at their number: undefined behaviour
        }
        for (std::size_t i = bytes.find(' '); i != std::string::npos; i = bytes.find(' ', i + 1)) {
            for (const char* number : {" 0", " 1", " -1", " 65536", " 4294967296", " 18446744073709551615", " 1e9"}) {
                expectAgreement(name, description, isRead, bytes.substr(0, i) + number + bytes.substr(i));
            }
        }
    });
}

TEST(DecoderAlone, TakesAnyNumberInAPointInTime) {
    const std::string bytes = golden("service/getLastSearchingForUpgradeDate.reply");
    const ArchiveDescription& description = findMethod(Side::SERVICE, "getLastSearchingForUpgradeDate")->reply;
    for (std::size_t i = bytes.find(' '); i != std::string::npos; i = bytes.find(' ', i + 1)) {
        for (const char* number : {" 65536", " 4294967296", " 9223372036854775807", " -9223372036854775808"}) {
            const std::string changed = bytes.substr(0, i) + number + bytes.substr(i);
            const DecodedArchive archive = decodeArchive(description, changed);
            EXPECT_LE(archive.end, changed.size());
            EXPECT_TRUE(archive.breakage || archive.values.size() == 1) << changed;
        }
    }
}

} // namespace
} // namespace DAX::Tests
