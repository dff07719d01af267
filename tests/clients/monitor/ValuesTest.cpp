#include "monitor/Values.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "clients/monitor/Messages.h"

namespace DAX::Tests {
namespace {

using namespace DAXIPC::DBUSLowLevel;

std::string replyAsText(const std::string& method, const std::string& archive, std::size_t most = 80) {
    return monitor::valuesAsText(decodeArchive(findMethod(Side::SERVICE, method)->reply, archive).values, most);
}

TEST(Values, ReadAsPeopleWriteThem) {
    EXPECT_EQ(
        replyAsText("getSearchResult", golden("service/getSearchResult.reply")),
        "searchResult={result: SUCCESS, upgrade: {upgradeType: OTN, upgradeId: <2 bytes: 01ff>, version: \"18.1\", "
        "updateInfo: <4 bytes: 3c752f3e>, kind: IMPORTANT, scope: 2}}");
    EXPECT_EQ(replyAsText("getSearchProgress", golden("service/getSearchProgress.reply")),
              "progress={result: IN_PROGRESS, progressPercent: 50, progressDetail: 2.5}");
    EXPECT_EQ(replyAsText("getSearchResult", H + " 0 0 3 0 1 0\n"), "searchResult={result: FAILED, upgrade: none}");
    EXPECT_EQ(replyAsText("getSupportedUpgradeTypes", H + " 0 0 3 0 1 2 77\n"), "upgradeTypes=[OTA, OTN, 77]");
    EXPECT_EQ(replyAsText("getModelsSearchResult", H + " 0 0 0 0\n"), "models=[]");
}

TEST(Values, AreCutWhereTheyAreTooLong) {
    EXPECT_EQ(replyAsText("getCurrentVersion", H + " 6 abcdef\n", 4), "version=\"abcd...\"");
    EXPECT_EQ(replyAsText("getSearchResult", golden("service/getSearchResult.reply"), 2),
              "searchResult={result: SUCCESS, upgrade: {upgradeType: OTN, upgradeId: <2 bytes: 01...>, version: "
              "\"18...\", updateInfo: <4 bytes: 3c...>, kind: IMPORTANT, scope: 2}}");
}

TEST(Values, AreTheSameInJson) {
    const auto archive =
        decodeArchive(findMethod(Side::SERVICE, "getSearchResult")->reply, golden("service/getSearchResult.reply"));
    EXPECT_EQ(monitor::valuesAsJson(archive.values), nlohmann::ordered_json::parse(R"({"searchResult":
        {"result": "SUCCESS", "upgrade": {"upgradeType": "OTN", "upgradeId": "01ff", "version": "18.1",
         "updateInfo": "3c752f3e", "kind": "IMPORTANT", "scope": 2}}})"));
}

} // namespace
} // namespace DAX::Tests
