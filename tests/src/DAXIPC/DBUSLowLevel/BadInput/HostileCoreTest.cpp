// Bad answers of the update core to every call: the call ends with a value or an exception, and no length in an answer
// makes the process allocate memory for it.
#include <functional>

#include <boost/exception/diagnostic_information.hpp>
#include <gmock/gmock.h>

#include "BoundedMemory.h"
#include "CoreInterface/ICore.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/CCoreProxyFactory.h"
#include "support/Corruption.h"
#include "support/FakeDBUSProxy.h"
#include "support/FakeKovan.h"
#include "support/ServiceContract.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {
namespace {

using DAXIPC::DBUSLowLevel::CCoreProxyFactory;

// A core with an open transaction.
struct Far {
    std::unique_ptr<Core::ICore> core;
    std::shared_ptr<Core::ICoreTransaction> transaction;
};

struct Operation {
    const char* name;
    bool hasResult;
    std::function<void(Far& far)> call;
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

const std::vector<Operation> OPERATIONS{
    {"getSupportedUpgradeTypes", true, [](Far& far) { far.core->getSupportedUpgradeTypes(); }},
    {"getCurrentVersion", true, [](Far& far) { far.core->getCurrentVersion(); }},
    {"scheduleFactoryReset", false, [](Far& far) { far.core->scheduleFactoryReset(); }},
    {"createTransaction", true, [](Far& far) { far.core->createTransaction({}); }},
    {"helloMessage", false, [](Far& far) { far.core->createTransaction({}); }},
    {"isSearchingPossible", true, [](Far& far) { far.transaction->isSearchingPossible(); }},
    {"startSearching", false, [](Far& far) { far.transaction->startSearching("deep"); }},
    {"startModelsSearching", false, [](Far& far) { far.transaction->startModelsSearching(); }},
    {"getSearchProgress", true, [](Far& far) { far.transaction->getSearchProgress(); }},
    {"getSearchResult", true, [](Far& far) { far.transaction->getSearchResult(); }},
    {"getModelsSearchResult", true, [](Far& far) { far.transaction->getModelsSearchResult(); }},
    {"startInstallation", false, [](Far& far) { far.transaction->startInstallation({"main"}); }},
    {"getInstallationProgress", true, [](Far& far) { far.transaction->getInstallationProgress(); }},
    {"startFinalization", false, [](Far& far) { far.transaction->startFinalization({"main"}, boost::none, true); }},
    {"getFinalizationProgress", true, [](Far& far) { far.transaction->getFinalizationProgress(); }},
    {"cancelCoreTransaction", false, [](Far& far) { far.transaction->cancelCoreTransaction("enough"); }},
};

class HostileCore : public testing::TestWithParam<Operation> {
protected:
    HostileCore() {
        for (const Operation& operation : OPERATIONS) {
            bus.reply(operation.name, golden("core/" + std::string(operation.name) + ".reply"));
        }
        far.core = CCoreProxyFactory(bus.factory(), 1).create();
        far.transaction = far.core->createTransaction({});
    }

    // How the call ended: the text of an exception, or nothing.
    std::string call() {
        FakeKovan::forgetRecords();
        bus.forgetEvents();
        try {
            GetParam().call(far);
        } catch (const std::exception&) {
            return boost::current_exception_diagnostic_information(true);
        }
        return "";
    }

    std::string callAnsweredBy(const std::string& archive) {
        bus.reply(GetParam().name, archive);
        const std::string failure = withBoundedMemory(archive, [this] { return call(); });
        bus.reply(GetParam().name, good);
        EXPECT_EQ(call(), "") << "the next good answer";
        return failure;
    }

    void expectAnEnd(const std::vector<std::string>& archives) {
        for (const std::string& archive : archives) {
            callAnsweredBy(archive);
            if (HasFailure()) {
                FAIL() << GetParam().name << " " << shown(archive);
            }
        }
    }

    FakeDBUS bus;
    Far far;
    const std::string good = golden("core/" + std::string(GetParam().name) + ".reply");
};

TEST_P(HostileCore, MayCutItsAnswerAnywhere) {
    expectAnEnd(cutsOf(good));
}

TEST_P(HostileCore, MayChangeAnyByteOfItsAnswer) {
    expectAnEnd(changesOf(good, TELLING_BYTES));
}

TEST_P(HostileCore, MayDeclareHugeLengths) {
    expectAnEnd(tokenChangesOf(good, HUGE_LENGTHS));
}

TEST_P(HostileCore, MayAnswerWithNumbersOutOfRange) {
    expectAnEnd(tokenChangesOf(good, NUMBERS_OUT_OF_RANGE));
}

TEST_P(HostileCore, MayAnswerWithNoise) {
    expectAnEnd(noise(1 << 20));
}

// An empty answer has no result and gives the default; a broken header throws the library's exception. The answer to a
// call without a result is not read.
TEST_P(HostileCore, GetsAnUnreadableHeaderRefused) {
    EXPECT_EQ(callAnsweredBy(""), "");
    for (const std::string archive : {"x", "22 serialization::archive 19 1", "1000000000000000000 x"}) {
        const std::string failure = callAnsweredBy(archive);
        EXPECT_EQ(failure.find("archive_exception") != std::string::npos, GetParam().hasResult) << failure;
    }
}

TEST_P(HostileCore, MaySendAnyBytesAsAnExceptionOfAnyName) {
    const std::string exception = golden("exceptions/CUSBReadError");
    std::vector<std::string> archives = cutsOf(exception);
    for (const auto& more : {changesOf(exception, FEW_TELLING_BYTES), tokenChangesOf(exception, HUGE_LENGTHS)}) {
        archives.insert(archives.end(), more.begin(), more.end());
    }
    for (const std::string& archive : archives) {
        bus.replyWithException(GetParam().name, "CUSBReadError", archive);
        const std::string failure = withBoundedMemory(archive, [this] { return call(); });
        ASSERT_NE(failure, "") << shown(archive);
    }
    for (const std::string& name : wireExceptionNames()) {
        bus.replyWithException(GetParam().name, name, "");
        EXPECT_THAT(call(), testing::HasSubstr("archive_exception")) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, HostileCore, testing::ValuesIn(OPERATIONS),
                         [](const auto& operation) { return operation.param.name; });

} // namespace
} // namespace DAX::Tests
