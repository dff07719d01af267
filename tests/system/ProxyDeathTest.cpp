// The session lives as long as the connection that asked for it, whatever happens to the connection of its proxy.
#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <gmock/gmock.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "system/support/Desk.h"

namespace DAX::Tests {
namespace {

namespace Manager = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;

const char PROXY_ID[] = "Proxy-1";

// One connection of a client, and the answers to it.
class Connection {
public:
    std::string name() const { return m_peer.name(); }

    // The call's result as an archive, or the name of the exception.
    template <class... Values>
    std::string call(const std::string& method, const Values&... values) {
        std::ostringstream parameters;
        {
            boost::archive::text_oarchive archive(parameters);
            ((archive << values), ...);
        }
        const RawMessage message(dbus_message_new_method_call(Manager::CONNECTION_NAME, Manager::OBJECT_PATH,
                                                              Manager::INTERFACE_NAME, method.c_str()));
        appendBytes(*message, parameters.str());
        const RawMessage reply = m_peer.call(*message);
        const std::vector<std::string> parts = reply ? byteArrays(*reply) : std::vector<std::string>();
        if (parts.size() != 3) {
            return "<no answer>";
        }
        return parts[0] == "REPLY" ? parts[2] : parts[1];
    }

private:
    RawPeer m_peer;
};

template <class... Values>
void read(const std::string& archive, Values&... values) {
    std::istringstream text(archive);
    boost::archive::text_iarchive input(text);
    ((input >> values), ...);
}

// Who owns the service; "<nobody>" without a session.
std::string ownerAccordingTo(Connection& connection) {
    bool owned = false;
    int priority = 0;
    std::string owner;
    int type = 0;
    read(connection.call("getServiceOwner"), owned, priority, owner, type);
    return owned ? owner : "<nobody>";
}

unsigned int priorityAccordingTo(Connection& proxy) {
    unsigned int priority = 0;
    read(proxy.call("getClientPriority"), priority);
    return priority;
}

TEST(ProxyDeath, LeavesTheSessionToTheClientWhoseManagerLives) {
    const Desk desk;
    Connection manager;
    auto proxy = std::make_unique<Connection>();
    manager.call("getService", 4, std::string("client"), 2, std::string(PROXY_ID), manager.name());
    proxy->call("helloMessage", std::string(PROXY_ID));
    ASSERT_EQ(priorityAccordingTo(*proxy), 4U);

    const std::string dead = proxy->name();
    proxy.reset();
    ASSERT_TRUE(desk.waitForMessage("Unregistering connection named " + dead));
    EXPECT_EQ(ownerAccordingTo(manager), "client");
    EXPECT_EQ(desk.countMessages("Client disconnected"), 0);
    EXPECT_EQ(desk.countMessages("Invalidate done."), 0);

    Connection next;
    EXPECT_EQ(next.call("getClientPriority"), "DAXUnknownException");
    next.call("helloMessage", std::string(PROXY_ID));
    EXPECT_EQ(priorityAccordingTo(next), 4U);
    EXPECT_FALSE(next.call("startNewTransaction", 2, std::string("Proxy-2"), next.name()).empty());
    EXPECT_TRUE(desk.waitForCoreCall("createTransaction"));
}

TEST(ProxyDeath, WithTheProxyAliveTheDeathOfTheManagerEndsTheSession) {
    const Desk desk;
    auto manager = std::make_unique<Connection>();
    Connection proxy;
    manager->call("getService", 4, std::string("client"), 2, std::string(PROXY_ID), manager->name());
    proxy.call("helloMessage", std::string(PROXY_ID));
    const std::string dead = manager->name();
    manager.reset();
    ASSERT_TRUE(desk.waitForMessage("Unregistering connection named " + dead));
    EXPECT_EQ(ownerAccordingTo(proxy), "<nobody>");
    EXPECT_EQ(proxy.call("getClientPriority"), "DAXUnknownException");
}

} // namespace
} // namespace DAX::Tests
