#pragma once

#include <memory>
#include <string>

#include "DaemonUnderTest.h"
#include "support/ServiceContract.h"

namespace DAX::Tests {

// A client of the daemon with an open session and transaction, on three raw connections, over a simulated core whose
// search has succeeded. It can send anything, and undoes the effects.
class ClientUnderTest : public DaemonUnderTest {
protected:
    ClientUnderTest();

    RawPeer& peer(Caller caller) { return *m_peers[static_cast<std::size_t>(caller)]; }

    // Makes one call. `askAndRestore` checks that there is exactly one answer, a result or an exception that a client
    // knows, restores the session, the transaction, the locks and the files, and checks that the next good call works.
    Answer ask(const ServiceMethod& method, const std::string& parameters);
    Answer askAndRestore(const ServiceMethod& method, const std::string& parameters);

    // The good parameters of each method.
    static std::string goodRequest(const ServiceMethod& method);

    // Undoes what a call of `method` with these parameters may have changed if it was answered like this, or what a
    // call without an answer may have changed.
    void restore(const ServiceMethod& method, const std::string& parameters, const Answer& answer);
    void restore(const ServiceMethod& method);

    // Leaves the bus with all three connections and returns with new ones.
    void comeBack();

    // Checks that nobody has a session.
    bool isFree();
    bool isGranted();

    // Checks that no peer has got a reply that it did not ask for.
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
