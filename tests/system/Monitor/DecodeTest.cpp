// daxctl decode, as a person sees it.
#include <gmock/gmock.h>

#include "support/WireGoldens.h"
#include "system/Monitor/MonitorTool.h"

namespace DAX::Tests {
namespace {

using namespace testing;

TEST(DaxctlDecode, ExplainsARequestFieldByField) {
    const auto run = daxctl({"decode", "getService"}, golden("service/getService.request"));
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output, "  offset  length  field                     type                      value\n"
                          "      29       1  priority                  ServiceClientPriority     4\n"
                          "      31      13  clientName                string                    \"update app\"\n"
                          "      45       1  transactionType           ServiceTransactionType    2\n"
                          "      47       9  sessionId                 string                    \"Proxy-2\"\n"
                          "      57       6  connectionId              string                    \":1.2\"\n");
}

TEST(DaxctlDecode, ExplainsTheRecordsOfAReply) {
    const auto run = daxctl({"decode", "getSearchResult", "reply", "--core"}, golden("core/getSearchResult.reply"));
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
    EXPECT_EQ(run.output, "  offset  length  field                     type                      value\n"
                          "      29      51  searchResult              SearchResult              \n"
                          "      33       1    result                  ETransactionResult        SUCCESS\n"
                          "      35       1    upgradeType             UpgradeType               OTN\n"
                          "      37       1    kind                    UpgradeKind               IMPORTANT\n"
                          "      39       9    upgradeId               bytes                     <2 bytes: 01ff>\n"
                          "      49      12    version                 optional string           \n"
                          "      55       6      value                 string                    \"18.1\"\n"
                          "      62      16    updateInfo              bytes                     <4 bytes: 3c752f3e>\n"
                          "      79       1    scope                   int                       2\n");
}

TEST(DaxctlDecode, SaysWhereABrokenArchiveBreaks) {
    const auto run = daxctl({"decode", "acquireExternalLock"}, "22 serialization::archive 18 1 a high");
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    EXPECT_THAT(run.output, HasSubstr("29       3  clientName                string                    \"a\"\n"));
    EXPECT_EQ(run.errors, "daxctl: this acquireExternalLock request is broken at byte 33, in priority: \"high\" is no "
                          "number of 32 bits.\n");
}

TEST(DaxctlDecode, GivesTheSameAsJson) {
    const auto run = daxctl({"decode", "acquireExternalLock", "--json"}, "22 serialization::archive 18 1 a high");
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
    const auto document = nlohmann::json::parse(run.output);
    EXPECT_EQ(document["side"], "service");
    EXPECT_EQ(document["archive"], "request");
    EXPECT_EQ(
        document["fields"][0],
        nlohmann::json::parse(R"({"name": "clientName", "type": "string", "offset": 29, "length": 3, "value": "a"})"));
    EXPECT_EQ(
        document["breakage"],
        nlohmann::json::parse(R"({"offset": 33, "field": "priority", "reason": "\"high\" is no number of 32 bits"})"));
}

TEST(DaxctlDecode, ExplainsAnException) {
    const auto run = daxctl({"decode", "startInstallation", "exception"}, golden("exceptions/CUSBReadError"));
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
    EXPECT_THAT(run.output, HasSubstr("supportCode               string                    \"U-7\"\n"));
}

TEST(DaxctlDecode, SaysWhatNobodyReads) {
    EXPECT_EQ(daxctl({"decode", "getServiceOwner"}).output, "getServiceOwner request has no archive.\n");
    EXPECT_EQ(daxctl({"decode", "getServiceOwner"}, "x").output,
              "getServiceOwner request has no archive. Nobody reads these bytes.\n");
    EXPECT_THAT(daxctl({"decode", "invalidate"}, "22 serialization::archive 18 1 a 5 6").output,
                HasSubstr("      32       4  nobody reads these bytes\n"));
    EXPECT_THAT(daxctl({"decode", "helloMessage", "reply"}, "22 serialization::archive 18\n").output,
                HasSubstr("the header alone\n"));
}

FinishedRun decodeFrom(const std::string& input, const std::string& view) {
    Command command;
    command.line = {"sh", "-c", "exec " DAXCTL " decode getService" + view + " <" + input};
    return run(command);
}

TEST(DaxctlDecode, ReadsNoMoreThanAnArchiveOnTheBusCanHave) {
    const auto text = decodeFrom("/dev/zero", "");
    EXPECT_EQ(text.end, ProcessEnd::exited(1));
    EXPECT_EQ(text.errors, "daxctl: The standard input has more than 64 MiB. No archive on the bus is larger.\n");
    const auto json = decodeFrom("/dev/zero", " --json");
    EXPECT_EQ(json.end, ProcessEnd::exited(1));
    EXPECT_EQ(nlohmann::json::parse(json.output)["kind"], "refused");
}

TEST(DaxctlDecode, SaysWhenItsInputCannotBeRead) {
    EXPECT_EQ(decodeFrom("/", "").errors, "daxctl: The standard input cannot be read: Is a directory\n");
    EXPECT_EQ(decodeFrom("&-", "").errors, "daxctl: The standard input cannot be read: Bad file descriptor\n");
}

TEST(DaxctlDecode, ProposesTheNearestMethod) {
    const auto run = daxctl({"decode", "getServise"});
    EXPECT_EQ(run.end, ProcessEnd::exited(2));
    EXPECT_EQ(run.errors, "daxctl: The service has no method getServise. Did you mean getService?\n");
    EXPECT_EQ(daxctl({"decode", "createTransaction"}).errors,
              "daxctl: The service has no method createTransaction, but the core has: add --core.\n");
    EXPECT_EQ(daxctl({"decode", "--core", "getService"}).errors,
              "daxctl: The core has no method getService, but the service has: leave --core out.\n");
}

TEST(DaxctlDecode, KnowsRequestReplyAndExceptionOnly) {
    EXPECT_EQ(daxctl({"decode", "getService", "answer"}).end, ProcessEnd::exited(2));
    EXPECT_EQ(daxctl({"decode"}).end, ProcessEnd::exited(2));
}

} // namespace
} // namespace DAX::Tests
