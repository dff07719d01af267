#pragma once

#include <array>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "BusMessagesInput.h"
#include "support/RawPeer.h"

namespace DAX::Fuzz {

// Ends the process with this text: a finding.
[[noreturn]] void fail(const std::string& what);

// A message that the bus itself answers, with one text for an argument or none.
Tests::RawMessage makeBusCall(const char* member, const char* interface = DBUS_INTERFACE_DBUS,
                              const std::string& argument = {});

// Waits for the reply; none within the bound is a finding.
Tests::RawMessage callOrFail(Tests::RawPeer& peer, DBusMessage& message, const std::string& what);

// The peers of one sequence. They come at their first message and leave at the end, and what they say reaches the bus
// in the order of the steps.
class BusPeers {
public:
    // `master` is the connection that asks whether the service still lives; `service` is that one's unique name.
    BusPeers(Tests::RawPeer& master, std::string service) : m_master(master), m_service(std::move(service)) {}

    void play(const std::vector<BusStep>& steps);

    // After a call by another connection has been answered, so that all of the peers' have been handled: whether each
    // call to the service that waits for a reply has one, of a good form, and nothing else has.
    void checkReplies();

    // All leave. Returns when the bus has seen it.
    void leave();

    // Whether this sender has sent a message with this serial that wants no reply: a call that says so, or no call.
    bool wantedNoReply(const std::string& sender, std::uint32_t serial) const;

private:
    struct Peer {
        explicit Peer(std::size_t slot) : slot(slot), name(connection.name()) {}

        std::size_t slot;
        Tests::RawPeer connection;
        std::string name;
        std::map<std::uint32_t, BusStep> sent; // by the serials
        bool cutOff = false;                   // the bus has ended the connection, for a message that it takes for bad
    };

    Peer& peerAt(std::size_t slot);
    void leave(std::size_t slot);
    void settle(Peer& peer);
    void send(const BusStep& step);
    Tests::RawMessage makeMessage(const BusStep& step);
    void appendBody(DBusMessage& message, const BusStep& step);
    void appendNames(DBusMessage& message, const std::string& choices);
    std::string nameOf(std::size_t choice) const;
    std::string destinationOf(BusDestination destination) const;
    static void checkRepliesOf(Peer& peer);

    Tests::RawPeer& m_master;
    const std::string m_service;
    std::array<std::unique_ptr<Peer>, BUS_PEERS> m_peers;
    Peer* m_last = nullptr; // the peer that has sent last, and whose messages the bus may not have read yet
    std::set<std::pair<std::string, std::uint32_t>> m_unwanted;
};

} // namespace DAX::Fuzz
