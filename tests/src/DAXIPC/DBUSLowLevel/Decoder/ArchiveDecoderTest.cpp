#include "DAXIPC/DBUSLowLevel/Decoder/ArchiveDecoder.h"

#include <gmock/gmock.h>

#include "support/WireGoldens.h"

namespace DAX::Tests {
namespace {

using namespace DAXIPC::DBUSLowLevel;
using namespace testing;

const std::string H = "22 serialization::archive 18";

const ArchiveDescription& request(const std::string& method) {
    return findMethod(Side::SERVICE, method)->request;
}
const ArchiveDescription& reply(const std::string& method) {
    return findMethod(Side::SERVICE, method)->reply;
}

std::string asText(const DecodedValue& value) {
    if (const auto* flag = std::get_if<bool>(&value.value)) {
        return *flag ? "true" : "false";
    }
    if (const auto* number = std::get_if<std::int64_t>(&value.value)) {
        return std::to_string(*number);
    }
    if (const auto* fraction = std::get_if<double>(&value.value)) {
        return std::to_string(*fraction);
    }
    if (const auto* text = std::get_if<std::string>(&value.value)) {
        return *text;
    }
    return "-";
}

// Each value with its place, children indented.
std::vector<std::string> lines(const std::vector<DecodedValue>& values, const std::string& indent = "") {
    std::vector<std::string> all;
    for (const DecodedValue& value : values) {
        all.push_back(indent + value.name + "=" + asText(value) + " @" + std::to_string(value.offset) + "+" +
                      std::to_string(value.length));
        const auto children = lines(value.children, indent + "  ");
        all.insert(all.end(), children.begin(), children.end());
    }
    return all;
}

std::string breakageOf(const ArchiveDescription& description, const std::string& bytes) {
    const DecodedArchive archive = decodeArchive(description, bytes);
    if (!archive.breakage) {
        return "none";
    }
    return std::to_string(archive.breakage->offset) + " " + archive.breakage->field + ": " + archive.breakage->reason;
}

TEST(ArchiveDecoder, TellsEachFieldWithItsPlace) {
    const std::string bytes = golden("service/getService.request");
    const DecodedArchive archive = decodeArchive(request("getService"), bytes);
    EXPECT_EQ(bytes, H + " 4 10 update app 2 7 Proxy-2 4 :1.2");
    EXPECT_FALSE(archive.breakage);
    EXPECT_THAT(lines(archive.values),
                ElementsAre("priority=4 @29+1", "clientName=update app @31+13", "transactionType=2 @45+1",
                            "sessionId=Proxy-2 @47+9", "connectionId=:1.2 @57+6"));
    EXPECT_EQ(archive.end, bytes.size());
}

TEST(ArchiveDecoder, ReadsRecordsInRecords) {
    const DecodedArchive archive = decodeArchive(reply("getSearchResult"), golden("service/getSearchResult.reply"));
    EXPECT_FALSE(archive.breakage);
    EXPECT_THAT(lines(archive.values),
                ElementsAre("searchResult=- @29+61", "  result=2 @33+1", "  upgrade=- @35+55", "    =- @41+49",
                            "      upgradeType=2 @45+1", "      upgradeId=\x01\xff @47+9", "      version=- @57+12",
                            "        =18.1 @63+6", "      updateInfo=<u/> @70+16", "      kind=1 @87+1",
                            "      scope=2 @89+1"));
}

TEST(ArchiveDecoder, ReadsListsAndEmptyOptionals) {
    EXPECT_THAT(lines(decodeArchive(request("startInstallation"), golden("service/startInstallation.request")).values),
                ElementsAre("items=- @29+17", "  =a @37+3", "  =b c @41+5"));
    EXPECT_THAT(lines(decodeArchive(reply("isSearchingPossible"), H + " 0 1 0\n").values),
                ElementsAre("isPossible=- @29+5"));
    EXPECT_THAT(lines(decodeArchive(reply("getSupportedUpgradeTypes"), H + " 0 0 0 0\n").values),
                ElementsAre("upgradeTypes=- @29+7"));
}

TEST(ArchiveDecoder, ReadsAPointInTime) {
    const auto date = [](const std::string& archive) {
        return lines(decodeArchive(reply("getLastSearchingForUpgradeDate"), archive).values).back();
    };
    EXPECT_EQ(date(golden("service/getLastSearchingForUpgradeDate.reply")), "  =2024-02-29T23:59:58 @35+35");
    EXPECT_EQ(date(H + " 0 1 1 0 0 0 0 15 not-a-date-time"), "  =not-a-date-time @35+26");
    EXPECT_EQ(date(H + " 0 1 1 0 0 0 0 8 20240229 0 1 0 1 2 3 4000"), "  =2024-02-29T01:02:03.004000 @35+35");
}

TEST(ArchiveDecoder, ReadsEveryGoldenArchiveToItsEnd) {
    for (const auto& [side, folder] : {std::pair(Side::SERVICE, "service/"), std::pair(Side::CORE, "core/")}) {
        for (const MethodDescription& method : methodsOf(side)) {
            for (const auto& [description, end] :
                 {std::pair(&method.request, ".request"), std::pair(&method.reply, ".reply")}) {
                const std::string bytes = golden(folder + method.name + end);
                EXPECT_EQ(description->exists, !bytes.empty()) << folder << method.name << end;
                const DecodedArchive archive = decodeArchive(*description, bytes);
                EXPECT_FALSE(archive.breakage) << folder << method.name << end << ": " << archive.breakage->reason;
                EXPECT_EQ(archive.values.size(), description->fields.size()) << folder << method.name << end;
                EXPECT_FALSE(hasUnreadBytes(archive, bytes)) << folder << method.name << end;
            }
        }
    }
}

TEST(ArchiveDecoder, ReadsAnException) {
    const DecodedArchive archive = decodeArchive(exceptionArchive(), golden("exceptions/CUSBReadError"));
    EXPECT_FALSE(archive.breakage);
    EXPECT_EQ(asText(archive.values[0]), "U-7");
    EXPECT_THAT(asText(archive.values[1]), StartsWith("Throw location unknown"));
}

TEST(ArchiveDecoder, SaysWhereAnArchiveEnds) {
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), ""), "0 : the archive ends before length of the signature");
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), H), "28 clientName: the archive ends before length of a text");
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), H + " 9 nine cha"),
              "29 clientName: length of a text of 9, but only 8 bytes follow");
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), H + " 9 nine char "),
              "41 priority: the archive ends before number of 32 bits");
}

TEST(ArchiveDecoder, SaysWhatIsNoArchive) {
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), "hello"), "0 : \"hello\" is no length of the signature");
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), "3 abc 18"),
              "0 : no archive: it does not begin with \"22 serialization::archive\"");
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), "22 serialization::archive 19"),
              "26 : an archive of version 19; the newest known is 18");
}

TEST(ArchiveDecoder, SaysWhichFieldBreaksAndWhy) {
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), H + " 1 a high"),
              "33 priority: \"high\" is no number of 32 bits");
    EXPECT_EQ(breakageOf(request("acquireExternalLock"), H + " 1 a 99999999999"),
              "33 priority: \"99999999999\" is no valid number of 32 bits");
    EXPECT_EQ(breakageOf(reply("getSearchResult"), H + " 0 0 2 0 1 1 0 0 2 2 0 1 255 0 1 1 4 18.1 0 0 7 2"),
              "74 searchResult.upgrade.kind: a kind of upgrade is 0 or 1, not 7");
    EXPECT_EQ(breakageOf(reply("getSearchProgress"), H + " 0 0 1 50 0 1 2"),
              "42 progress.progressDetail: \"2\" is no valid flag of an optional, which is 0 or 1");
    EXPECT_EQ(breakageOf(request("startInstallation"), H + " 0 0 3 0 1 a 5 b"),
              "41 items[1]: length of a text of 5, but only 1 bytes follow");
    EXPECT_EQ(breakageOf(reply("getLastSearchingForUpgradeDate"), H + " 0 1 1 0 0 0 0 8 20249999 0 1 0 0 0 0 0"),
              "43 date: no date; one is 8 digits, as in 20240229");
}

TEST(ArchiveDecoder, KeepsWhatCameBeforeTheBreakage) {
    const DecodedArchive archive = decodeArchive(request("acquireExternalLock"), H + " 1 a high");
    EXPECT_EQ(lines(archive.values).front(), "clientName=a @29+3");
}

TEST(ArchiveDecoder, TakesNoMemoryForACountThatTheBytesCannotHold) {
    EXPECT_EQ(breakageOf(request("startInstallation"), H + " 0 0 18446744073709551615 0 1 a"),
              "33 items: count of elements of 18446744073709551615, but only 5 bytes follow");
}

TEST(ArchiveDecoder, ReadsLongListsAndTextsToTheEndButKeepsOnlyThePartThatItMay) {
    std::string bytes = H + " 0 0 5 0 ";
    for (int i = 0; i < 5; ++i) {
        bytes += "4 item ";
    }
    const DecodedArchive archive = decodeArchive(request("startInstallation"), bytes, DecodingLimits{2, 6});
    EXPECT_FALSE(archive.breakage);
    EXPECT_THAT(lines(archive.values), ElementsAre("items=- @29+42", "  =item @37+6", "  =it @44+6"));
    EXPECT_EQ(archive.values[0].omitted, 3U);
    EXPECT_EQ(archive.values[0].children[1].omitted, 2U);
}

TEST(ArchiveDecoder, TellsOfBytesThatNobodyReads) {
    const auto unread = [](const std::string& bytes) {
        return hasUnreadBytes(decodeArchive(request("invalidate"), bytes), bytes);
    };
    EXPECT_FALSE(unread(H + " 1 a"));
    EXPECT_FALSE(unread(H + " 1 a\n"));
    EXPECT_TRUE(unread(H + " 1 a 5"));
    EXPECT_TRUE(hasUnreadBytes(decodeArchive(request("getServiceOwner"), H), H));
}

} // namespace
} // namespace DAX::Tests
