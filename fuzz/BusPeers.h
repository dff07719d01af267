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

// Reports a finding: ends the process with this text.
[[noreturn]] void fail(const std::string& what);

// A message that the bus itself answers, with one text argument or none.
Tests::RawMessage makeBusCall(const char* member, const char* interface = DBUS_INTERFACE_DBUS,
                              const std::string& argument = {});

// Waits for the reply. It is a finding when none comes within the bound.
Tests::RawMessage callOrFail(Tests::RawPeer& peer, DBusMessage& message, const std::string& what);

// The peers of one sequence. Each connects at its first message and leaves at the end. Their messages reach the bus in
// the order of the steps.
class BusPeers {
public:
    // `master` is the connection that asks whether the service still lives; `service` is the unique name of the
    // service.
    BusPeers(Tests::RawPeer& master, std::string service) : m_master(master), m_service(std::move(service)) {}

    void play(const std::vector<BusStep>& steps);

    // Call this when a later call by another connection has been answered, so that all calls of the peers have been
    // handled. Checks that each call to the service that waits for a reply has got exactly one, of a good form, and
    // that nothing else has got one.
    void checkReplies();

    // Makes all peers leave. Returns when the bus has noticed it.
    void leave();

    // Whether this sender has sent a message with this serial that wants no reply: a call that says so, or another kind
    // of message.
    bool wantedNoReply(const std::string& sender, std::uint32_t serial) const;

private:
    struct Peer {
        explicit Peer(std::size_t slot) : slot(slot), name(connection.name()) {}

        std::size_t slot;
        Tests::RawPeer connection;
        std::string name;
        std::map<std::uint32_t, BusStep> sent; // by the serials
        bool cutOff = false; // the bus has ended the connection because of a message that it finds bad
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
    Peer* m_last = nullptr; // the last peer that has sent; the bus may not have read its messages yet
    std::set<std::pair<std::string, std::uint32_t>> m_unwanted;
};

} // namespace DAX::Fuzz
