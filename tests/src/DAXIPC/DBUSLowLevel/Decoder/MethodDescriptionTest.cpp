#include "DAXIPC/DBUSLowLevel/Decoder/MethodDescription.h"

#include <gmock/gmock.h>

#include "support/ServiceContract.h"

namespace DAX::Tests {
namespace {

using namespace DAXIPC::DBUSLowLevel;
using namespace testing;

std::vector<std::string> fieldsOf(const ArchiveDescription& archive) {
    std::vector<std::string> fields;
    for (const FieldDescription& field : archive.fields) {
        fields.push_back(field.name + ": " + field.type->name);
    }
    return fields;
}

TEST(MethodDescription, HasEveryMethodOfTheServiceOnce) {
    std::vector<std::string> expected;
    for (const ServiceMethod& method : serviceMethods()) {
        expected.push_back(method.name);
    }
    std::vector<std::string> described;
    for (const MethodDescription& method : methodsOf(Side::SERVICE)) {
        described.push_back(method.name);
    }
    EXPECT_THAT(described, UnorderedElementsAreArray(expected));
    EXPECT_THAT(described, SizeIs(23));
}

TEST(MethodDescription, HasTheMethodsOfTheCore) {
    EXPECT_THAT(methodsOf(Side::CORE), SizeIs(16));
    EXPECT_NE(findMethod(Side::CORE, "createTransaction"), nullptr);
    EXPECT_EQ(findMethod(Side::SERVICE, "createTransaction"), nullptr);
}

TEST(MethodDescription, NamesTheFieldsOfRequestAndReply) {
    const MethodDescription& method = *findMethod(Side::SERVICE, "getService");
    EXPECT_THAT(fieldsOf(method.request),
                ElementsAre("priority: ServiceClientPriority", "clientName: string",
                            "transactionType: ServiceTransactionType", "sessionId: string", "connectionId: string"));
    EXPECT_THAT(fieldsOf(method.reply), ElementsAre("busName: string"));
}

TEST(MethodDescription, KnowsWhereThereIsNoArchive) {
    EXPECT_FALSE(findMethod(Side::SERVICE, "getServiceOwner")->request.exists);
    EXPECT_TRUE(findMethod(Side::SERVICE, "getServiceOwner")->reply.exists);
    EXPECT_TRUE(findMethod(Side::SERVICE, "helloMessage")->reply.exists);
    EXPECT_FALSE(findMethod(Side::CORE, "helloMessage")->reply.exists);
    EXPECT_FALSE(findMethod(Side::SERVICE, "invalidate")->reply.exists);
}

TEST(MethodDescription, NamesTheFieldsOfARecordInTheOrderOnTheWire) {
    const TypeDescription& core = *findMethod(Side::CORE, "getSearchProgress")->reply.fields[0].type;
    EXPECT_EQ(core.name, "TransactionProgress");
    EXPECT_THAT(fieldsOf({true, core.fields}),
                ElementsAre("progressPercent: int", "result: ETransactionResult", "progressDetail: optional float"));
    const TypeDescription& found = *findMethod(Side::CORE, "getSearchResult")->reply.fields[0].type;
    EXPECT_THAT(fieldsOf({true, found.fields}),
                ElementsAre("result: ETransactionResult", "upgradeType: UpgradeType", "kind: UpgradeKind",
                            "upgradeId: bytes", "version: optional string", "updateInfo: bytes", "scope: int"));
}

} // namespace
} // namespace DAX::Tests
