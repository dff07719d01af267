// What the outer object asks of the bus adapter.
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/DAXIPCServiceManagerAdapter.h"

#include <boost/thread/thread.hpp>

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterOverMocks.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using Common::DBUSWrapper::IDBUSAdapter;
using Common::DBUSWrapper::IDBUSRequestsHandler;
using Common::DBUSWrapper::IDBUSWrapper;
using DAXIPC::DBUSLowLevel::DAXIPCServiceManagerAdapter;

// What the bus adapter was last asked for, and what it does then.
struct AdapterScript {
    using Times = std::tuple<unsigned int, unsigned int, unsigned int>;
    Times times{0, 0, 0}; // stop condition, idle time-out, ping
    boost::optional<std::function<bool()>> stopCondition;
    boost::optional<std::function<void()>> pingFunction;
    std::string connectionName;
    std::function<void()> listen = [] {};
    std::function<void()> deactivate = [] { FakeKovan::note("deactivate"); };
};

class ScriptedAdapter : public IDBUSAdapter {
public:
    explicit ScriptedAdapter(AdapterScript& script) : m_script(script) {}
    ~ScriptedAdapter() override { FakeKovan::note("adapter gone"); }

    void activate(int, const std::string&) override { ADD_FAILURE() << "activate"; }
    void deactivate() override { m_script.deactivate(); }
    void listenDBUS(unsigned int stopInterval, unsigned int idleTimeout, unsigned int pingInterval,
                    boost::optional<std::function<bool()>> stopCondition,
                    boost::optional<std::function<void()>> pingFunction, const std::string& connectionName) override {
        m_script.times = {stopInterval, idleTimeout, pingInterval};
        m_script.stopCondition = stopCondition;
        m_script.pingFunction = pingFunction;
        m_script.connectionName = connectionName;
        m_script.listen();
    }

private:
    AdapterScript& m_script;
};

// The arguments with which an adapter was made: bus, object path, flag.
using Made = std::tuple<int, std::string, bool>;

class ScriptedAdapterFactory : public IDBUSAdapter::IDBUSAdapterFactory {
public:
    ScriptedAdapterFactory(AdapterScript& script, Made& made, std::shared_ptr<IDBUSRequestsHandler>& handler)
        : m_script(script), m_made(made), m_handler(handler) {}
    ~ScriptedAdapterFactory() override { FakeKovan::note("factory gone"); }

    std::unique_ptr<IDBUSAdapter> create(IDBUSWrapper::DBUSType type, const std::string& objectPath,
                                         std::shared_ptr<IDBUSRequestsHandler> handler, bool flag) override {
        m_made = {static_cast<int>(type), objectPath, flag};
        m_handler = std::move(handler);
        return std::make_unique<ScriptedAdapter>(m_script);
    }

private:
    AdapterScript& m_script;
    Made& m_made;
    std::shared_ptr<IDBUSRequestsHandler>& m_handler;
};

class DAXIPCServiceManagerAdapterTest : public Test {
protected:
    void listen(boost::optional<std::function<bool()>> stopCondition = boost::none,
                boost::optional<std::function<void()>> pingFunction = boost::none) {
        auto manager = std::make_unique<NiceMock<MockServiceManager>>();
        ON_CALL(*manager, getCurrentVersion).WillByDefault(Return("1000"));
        subject->listenDBUS(std::make_shared<OneServiceManagerFactory>(std::move(manager)), 3, 40, 10, stopCondition,
                            pingFunction);
    }

    AdapterScript adapter;
    Made made{-1, "", true};
    std::shared_ptr<IDBUSRequestsHandler> handler;
    std::unique_ptr<DAXIPCServiceManagerAdapter> subject =
        std::make_unique<DAXIPCServiceManagerAdapter>(std::make_shared<ScriptedAdapterFactory>(adapter, made, handler));
};

TEST_F(DAXIPCServiceManagerAdapterTest, ServesTheServiceManagerUnderItsNamesOnTheSystemBus) {
    listen();
    EXPECT_EQ(made, Made(1, "/org/kovan/tv/dax/service/cservicemanager", false));
    EXPECT_EQ(adapter.times, AdapterScript::Times(3, 40, 10));
    EXPECT_EQ(adapter.connectionName, "org.kovan.tv.dax.service.servicemanager");
    EXPECT_EQ(AdapterClient(*handler, ":1.1").call("getCurrentVersion").value<std::string>(), "1000");
}

TEST_F(DAXIPCServiceManagerAdapterTest, PassesItsStopConditionAndItsPingOn) {
    bool isPinged = false;
    listen(std::function<bool()>([] { return true; }), std::function<void()>([&] { isPinged = true; }));
    EXPECT_TRUE((*adapter.stopCondition)());
    (*adapter.pingFunction)();
    EXPECT_TRUE(isPinged);
}

TEST_F(DAXIPCServiceManagerAdapterTest, PassesOnThatThereIsNeitherStopConditionNorPing) {
    listen();
    EXPECT_FALSE(adapter.stopCondition.has_value());
    EXPECT_FALSE(adapter.pingFunction.has_value());
}

TEST_F(DAXIPCServiceManagerAdapterTest, PassesTheFailureOfTheServiceManagersFactoryOnBeforeItMakesAnAdapter) {
    class Failing : public Service::IServiceManager::IServiceManagerFactory {
        std::unique_ptr<Service::IServiceManager> create() override { throw std::runtime_error("no core"); }
    };
    EXPECT_THROW(subject->listenDBUS(std::make_shared<Failing>(), 3, 40, 10, boost::none, boost::none),
                 std::runtime_error);
    EXPECT_EQ(handler, nullptr);
}

TEST_F(DAXIPCServiceManagerAdapterTest, PassesTheFailureOfTheBusOn) {
    adapter.listen = [] { throw std::runtime_error("no bus"); };
    EXPECT_THROW(listen(), std::runtime_error);
}

TEST_F(DAXIPCServiceManagerAdapterTest, DeactivatingBeforeItListensDoesNothing) {
    subject->deactivate();
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(DAXIPCServiceManagerAdapterTest, DeactivatingIsLoggedAtItsEnd) {
    listen();
    FakeKovan::forgetRecords();
    subject->deactivate();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("deactivate", "log INF Adapter deactivated!"));
}

TEST_F(DAXIPCServiceManagerAdapterTest, ItsEndDeactivatesAndDestroysTheAdapterBeforeTheFactory) {
    listen();
    handler.reset();
    FakeKovan::forgetRecords();
    subject.reset();
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("deactivate", "log INF Adapter deactivated!", "adapter gone", "factory gone"));
}

TEST_F(DAXIPCServiceManagerAdapterTest, ItsEndDeactivatesWithoutInterruption) {
    listen();
    adapter.deactivate = [] {
        EXPECT_FALSE(boost::this_thread::interruption_enabled());
        FakeKovan::note("deactivate");
    };
    boost::thread([this] { subject.reset(); }).join();
    EXPECT_THAT(FakeKovan::journal(), Contains("deactivate"));
}

TEST_F(DAXIPCServiceManagerAdapterTest, ItsEndLogsAndIgnoresAFailedDeactivation) {
    listen();
    FakeKovan::forgetRecords();
    adapter.deactivate = [] { DAX_THROW(Common::Utils::GenericException(), "stuck"); };
    subject.reset();
    EXPECT_THAT(FakeKovan::messages("ERR"),
                ElementsAre(AllOf(StartsWith("Exception caught in ~DAXIPCServiceManagerAdapter. Ignoring: "),
                                  HasSubstr("stuck"))));
    EXPECT_THAT(FakeKovan::messages("INF"), IsEmpty());
    EXPECT_THAT(FakeKovan::journal(), IsSupersetOf({"adapter gone", "factory gone"}));
}

} // namespace
} // namespace DAX::Tests
