// What a client gets when its upgrade is to be finalized and the lock file cannot be verified.
#include <filesystem>

#include <gmock/gmock.h>

#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/Implementation/CServiceManagerAdapter.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Service/ServiceManager/CServiceManagerFactory.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterClient.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/MockService.h"
#include "support/AfterClose.h"
#include "support/DebugParameters.h"
#include "support/FakeCore.h"
#include "support/FakeKovan.h"
#include "support/FakePowerMode.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::NiceMock;
using testing::Not;
using testing::StartsWith;

// The real handler over the real service logic and a fake core, with a transaction whose upgrade is installed.
class FailedVerification : public testing::Test {
protected:
    FailedVerification() {
        std::filesystem::create_directories(Platform::IProductPaths::getDAXPartitionPath().string());
        adapter.useThisEventSubscriber(subscriber);
        core->searchResult.result = Core::TRANSACTION_SUCCESS;
        manager.call("getService", 4, std::string("update app"), 2, std::string("session"), std::string());
        session.call("helloMessage", std::string("session"));
        session.call("startNewTransaction", 2, std::string("transaction"), std::string());
        transaction.call("helloMessage", std::string("transaction"));
        EXPECT_TRUE(transaction.call("startInstallation", std::set<std::string>()).normal);
    }

    // The answer to getService for another client: an empty name is a refusal.
    std::string serviceForAnother() {
        AdapterClient other(adapter, ":1.9");
        return other.call("getService", 100, std::string("other"), 0, std::string("another"), std::string())
            .value<std::string>();
    }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    const DebugParameters debugParameters;
    const std::string lockPath = Platform::IProductPaths::getInstallationLockPath().string();
    const std::shared_ptr<FakeCoreScript> core = std::make_shared<FakeCoreScript>();
    NiceMock<MockEventsSubscriber> subscriber;
    DAXIPC::DBUSLowLevel::CServiceManagerAdapter adapter{std::make_shared<Service::CServiceManagerFactory>(
        std::make_shared<FakeCoreFactory>(core),
        std::make_shared<FakePowerModeFactory>(std::make_shared<FakePowerModeScript>()))};
    AdapterClient manager{adapter, ":1.1"};
    AdapterClient session{adapter, ":1.2"};
    AdapterClient transaction{adapter, ":1.3"};
};

TEST_F(FailedVerification, ReachesTheClientBlocksTheNextOneAndKeepsTheCoreFromFinalizing) {
    afterNextClose([this] { std::filesystem::resize_file(lockPath, 21); });
    const Reply reply = transaction.call("startFinalization", std::set<std::string>{"item"}, false);
    EXPECT_FALSE(reply.normal);
    EXPECT_EQ(reply.exceptionName, "DAXUnknownException");
    EXPECT_THAT(reply.diagnostic(), HasSubstr("InstallationState verification failed."));
    EXPECT_THAT(core->calls(), Not(Contains(StartsWith("startFinalization"))));
    EXPECT_EQ(std::filesystem::file_size(lockPath), 21U);
    EXPECT_EQ(serviceForAnother(), "");
    EXPECT_EQ(FakeKovan::messages("INF").back(),
              "Installation lock is acquired. There is no possibility to get service.");
}

TEST_F(FailedVerification, DoesNotHappenWhenTheFileIsIntact) {
    const Reply reply = transaction.call("startFinalization", std::set<std::string>{"item"}, false);
    EXPECT_TRUE(reply.normal);
    EXPECT_THAT(core->calls(), Contains(StartsWith("startFinalization")));
    EXPECT_EQ(serviceForAnother(), "");
}

} // namespace
} // namespace DAX::Tests
