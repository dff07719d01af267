#include "AdapterFixture.h"

namespace DAX::Tests {
namespace {

using testing::IsEmpty;

using CDBUSAdapterSubscriptionTest = AdapterFixture;

TEST_F(CDBUSAdapterSubscriptionTest, IsClearedByTheEmptyName) {
    handler->onRequest = [this](const FakeHandler::Request& request, std::stringstream&, std::string&) {
        handler->subscriber->subscribeForConnectionCloseEvent(request.sender);
        handler->subscriber->subscribeForConnectionCloseEvent("");
        return true;
    };
    start();
    std::string client;
    {
        RawPeer peer;
        client = peer.name();
        peer.call(*makeCall("any"));
    }
    ASSERT_TRUE(FakeKovan::waitForMessage("INF", "Unregistering connection named " + client));
    EXPECT_EQ(FakeKovan::count("INF", "Subscribed for connection " + client + " close event."), 1);
    EXPECT_EQ(FakeKovan::count("INF", "Unsubscribed for connection " + client + " close event."), 1);
    EXPECT_THAT(FakeKovan::journal("disconnected"), IsEmpty());
}

} // namespace
} // namespace DAX::Tests
