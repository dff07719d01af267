#pragma once

#include <memory>
#include <string>

#include "DaemonUnderTest.h"
#include "support/ServiceContract.h"

namespace DAX::Tests {

// A client of the daemon with a session and a transaction that are open, on three raw connections, over a simulated
// core whose search has ended well. It can send anything, and puts back what that has done.
class ClientUnderTest : public DaemonUnderTest {
protected:
    ClientUnderTest();

    RawPeer& peer(Caller caller) { return *m_peers[static_cast<std::size_t>(caller)]; }

    // One call. `askAndRestore` has exactly one answer, which is a result or an exception that a client knows; it
    // leaves the session, the transaction, the locks and the files as they were, and the next good call works.
    Answer ask(const ServiceMethod& method, const std::string& parameters);
    Answer askAndRestore(const ServiceMethod& method, const std::string& parameters);

    // The good parameters of each method.
    static std::string goodRequest(const ServiceMethod& method);

    // Puts back what a call of `method` with these parameters may have changed that was answered like this, or what one
    // without an answer may have changed.
    void restore(const ServiceMethod& method, const std::string& parameters, const Answer& answer);
    void restore(const ServiceMethod& method);

    // Leaves the bus with all three connections and comes back with new ones.
    void comeBack();

    // Nobody has a session.
    bool isFree();

    // No peer has got a reply that it did not ask for.
    void expectNoOtherReplies();

    void TearDown() override;

private:
    void open();
    void openTransaction();
    void connect();
    void releaseLock(const std::string& parameters, const Answer& answer);
    bool isSessionOpen();
    bool isTransactionOpen();
    Answer must(Caller caller, const std::string& method, const std::string& parameters);

    std::unique_ptr<RawPeer> m_peers[3];
    Answer m_owner;    // of "getServiceOwner"
    Answer m_priority; // of "getClientPriority"
};

} // namespace DAX::Tests
