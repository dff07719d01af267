// Callers without the right to call, and callers that do not wait.
#include "ClientUnderTest.h"

namespace DAX::Tests {
namespace {

using testing::HasSubstr;

class BadCallers : public ClientUnderTest {
protected:
    // Calls from all connections except the one that the method is for.
    std::vector<RawPeer*> others(const ServiceMethod& method) {
        std::vector<RawPeer*> peers{&m_stranger};
        for (const Caller caller : {Caller::MANAGER, Caller::SESSION, Caller::TRANSACTION}) {
            if (caller != method.caller) {
                peers.push_back(&peer(caller));
            }
        }
        return peers;
    }

    void expectRefusals(const ServiceMethod& method, const std::string& exception, const std::string& text) {
        for (RawPeer* const other : others(method)) {
            for (const std::string& parameters : {goodRequest(method), std::string("nonsense")}) {
                const Answer answer = answerIn(other->call(*makeCallWith(method.name, parameters)));
                EXPECT_EQ(answer.type, "EXCEPTION") << method.name;
                EXPECT_EQ(answer.function, exception) << method.name;
                EXPECT_THAT(answer.diagnostic(), HasSubstr(text + other->name())) << method.name;
            }
        }
    }

    RawPeer& stranger() { return m_stranger; }

private:
    RawPeer m_stranger;
};

TEST_F(BadCallers, AreRefusedEveryMethodOfASessionOfOthers) {
    for (const ServiceMethod& method : serviceMethods()) {
        if (method.caller == Caller::SESSION) {
            expectRefusals(method, "DAXUnknownException",
                           "Accessing m_service that was created by a different sender. Proxy name: Proxy-1. Original "
                           "sender: " +
                               peer(Caller::SESSION).name() + ". Current sender: ");
        }
    }
}

TEST_F(BadCallers, AreRefusedEveryMethodOfATransactionOfOthers) {
    for (const ServiceMethod& method : serviceMethods()) {
        if (method.caller == Caller::TRANSACTION) {
            expectRefusals(method, "TransactionInvalidatedException",
                           "Accessing m_serviceTransaction that was created by a different sender. Proxy name: "
                           "Proxy-2. Original sender: " +
                               peer(Caller::TRANSACTION).name() + ". Current sender: ");
        }
    }
}

TEST_F(BadCallers, MayVanishBetweenEveryCallAndItsReply) {
    for (const ServiceMethod& method : serviceMethods()) {
        peer(method.caller).send(*makeCallWith(method.name, goodRequest(method)));
        peer(method.caller).disconnect();
        comeBack();
    }
}

TEST_F(BadCallers, MayVanishOneAfterTheOtherWithoutBeingRemembered) {
    for (int round = 0; round < 20; ++round) {
        for (const ServiceMethod& method : serviceMethods()) {
            RawPeer passing;
            passing.send(*makeCallWith(method.caller == Caller::MANAGER ? "getServiceOwner" : method.name, "nonsense"));
            passing.disconnect();
        }
    }
    comeBack();
}

} // namespace
} // namespace DAX::Tests
