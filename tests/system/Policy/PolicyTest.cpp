// Who can reach the daemon on a system bus with the packaged policy.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <grp.h>
#include <unistd.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "support/RawPeer.h"
#include "system/support/Desk.h"

namespace DAX::Tests {
namespace {

using namespace testing;
namespace Names = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;

const char* const INTROSPECTABLE = "org.freedesktop.DBus.Introspectable";
const char* const PEER = "org.freedesktop.DBus.Peer";

const gid_t ANOTHER_GROUP = 65533;

const int STARTS = 50;
const int FEW_STARTS = 5;

// The number of next unique names that an attacker tries: the daemon's connections to its core and for its own name,
// and one more.
const int GUESSES = 3;
const int REPETITIONS = 10;

gid_t idOfGroup() {
    const group* const found = getgrnam(SystemBusRules::DAX_GROUP);
    if (found == nullptr) {
        throw std::runtime_error(std::string("this machine has no group ") + SystemBusRules::DAX_GROUP);
    }
    return found->gr_gid;
}

// Messages of one type that the object would serve as calls if they reached it: with its own interface, with others,
// and without one (except for signals, whose sender would be disconnected). They have all that their type needs, and
// want no reply.
std::vector<RawMessage> attacksOf(int type) {
    std::vector<RawMessage> attacks;
    for (const char* const member : {Names::Methods::acquireExternalLock, Names::Methods::scheduleFactoryReset}) {
        for (const char* const interfaceName :
             {Names::INTERFACE_NAME, INTROSPECTABLE, type == DBUS_MESSAGE_TYPE_SIGNAL ? "org.other" : nullptr}) {
            RawMessage attack(dbus_message_new(type));
            dbus_message_set_path(attack.get(), Names::OBJECT_PATH);
            dbus_message_set_member(attack.get(), member);
            dbus_message_set_interface(attack.get(), interfaceName);
            if (type == DBUS_MESSAGE_TYPE_METHOD_RETURN || type == DBUS_MESSAGE_TYPE_ERROR) {
                dbus_message_set_reply_serial(attack.get(), 1);
            }
            if (type == DBUS_MESSAGE_TYPE_ERROR) {
                dbus_message_set_error_name(attack.get(), DBUS_ERROR_FAILED);
            }
            dbus_message_set_no_reply(attack.get(), true);
            appendBytes(*attack, "22 serialization::archive 18 6 nobody 5");
            attacks.push_back(std::move(attack));
        }
    }
    return attacks;
}

// The messages to each of the unique names that follow the given one.
std::vector<RawMessage> addressedBehind(const std::string& name, const std::vector<RawMessage>& messages) {
    const auto number = name.rfind('.') + 1;
    const int last = std::stoi(name.substr(number));
    std::vector<RawMessage> addressed;
    for (int guess = last + 1; guess <= last + GUESSES; ++guess) {
        for (const RawMessage& message : messages) {
            addressed.emplace_back(dbus_message_copy(message.get()));
            dbus_message_set_destination(addressed.back().get(),
                                         (name.substr(0, number) + std::to_string(guess)).c_str());
        }
    }
    return addressed;
}

// The result of a call: "served", or the name of the error.
std::string outcomeOf(RawPeer& caller, DBusMessage& call) {
    const RawMessage reply = caller.call(call);
    if (!reply) {
        return "no reply";
    }
    const char* const error = dbus_message_get_error_name(reply.get());
    return error == nullptr ? "served" : error;
}

std::string call(RawPeer& caller, const char* path, const char* interfaceName, const char* method,
                 const std::string& destination = Names::CONNECTION_NAME) {
    const RawMessage message(dbus_message_new_method_call(destination.c_str(), path, interfaceName, method));
    return outcomeOf(caller, *message);
}

std::string askForOwner(RawPeer& caller, const std::string& destination = Names::CONNECTION_NAME) {
    return call(caller, Names::OBJECT_PATH, Names::INTERFACE_NAME, Names::Methods::getServiceOwner, destination);
}

class Policy : public Test {
protected:
    Desk desk{"", SystemBusRules::ofDevice()};
    RawPeer root;
};

class PolicyForOthers : public Policy {
protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "needs root, to make connections as nobody";
        }
    }

    // In how many of its starts the daemon served a message that a peer in these groups sprayed at it.
    int countStartsThatServed(const std::vector<RawMessage>& attacks, int starts,
                              const std::vector<gid_t>& groups = {}) {
        std::vector<std::string> attackers;
        for (int start = 0; start < starts; ++start) {
            RawPeer attacker = RawPeer::ofNobody(groups);
            attackers.push_back(attacker.name());
            const auto daemon = desk.startDaemon();
            spray(attacker, attacks);
            EXPECT_EQ(askForOwner(root), "served"); // so that all earlier messages have been handled
            daemon->send(SIGKILL);
            EXPECT_TRUE(desk.waitForNoDaemon());
        }
        const std::vector<std::string> log = desk.daemonMessages();
        return static_cast<int>(std::count_if(attackers.begin(), attackers.end(), [&log](const std::string& attacker) {
            return std::count(log.begin(), log.end(), "Registering new connection named " + attacker) != 0;
        }));
    }

    // True when the daemon, started by a call of root, serves one of the messages to its name or its unique name.
    bool servesAny(const std::vector<RawMessage>& attacks, RawPeer& attacker) {
        EXPECT_EQ(askForOwner(root), "served");
        for (const std::string& destination : {std::string(Names::CONNECTION_NAME), desk.uniqueNameOfDaemon()}) {
            for (const RawMessage& attack : attacks) {
                const RawMessage message(dbus_message_copy(attack.get()));
                dbus_message_set_destination(message.get(), destination.c_str());
                attacker.send(*message);
            }
        }
        attacker.waitForNameOwner(Names::CONNECTION_NAME, true); // so that the bus has passed them on
        EXPECT_EQ(askForOwner(root), "served");
        return desk.countMessages("Registering new connection named " + attacker.name()) != 0;
    }

private:
    // Sends to the next names until the daemon has its well-known name. The bus always has some of the messages to
    // read: there is no pause, and another connection asks for the name.
    void spray(RawPeer& attacker, const std::vector<RawMessage>& attacks) {
        const std::vector<RawMessage> volley = addressedBehind(attacker.name(), attacks);
        const auto bound = std::chrono::steady_clock::now() + RawPeer::DEFAULT_BOUND;
        do {
            for (int repetition = 0; repetition < REPETITIONS; ++repetition) {
                for (const RawMessage& attack : volley) {
                    dbus_connection_send(attacker.connection(), attack.get(), nullptr);
                }
            }
            dbus_connection_flush(attacker.connection());
            ASSERT_TRUE(dbus_connection_get_is_connected(attacker.connection())) << "the bus takes no such messages";
            ASSERT_LT(std::chrono::steady_clock::now(), bound) << "the daemon does not start";
        } while (dbus_bus_name_has_owner(root.connection(), Names::CONNECTION_NAME, nullptr) == 0);
    }
};

TEST_F(Policy, LetsRootHaveAWholeUpgrade) {
    const FinishedRun upgrade = desk.run("daxctl", {"upgrade", "--type", "OTN", "--item", "main"});
    EXPECT_EQ(upgrade.end, ProcessEnd::exited(0)) << upgrade.errors;
    EXPECT_THAT(desk.coreMethods(), Contains("startFinalization"));
}

TEST_F(Policy, LetsRootLookAround) {
    for (const char* const path : {"/", "/org/kovan", Names::OBJECT_PATH}) {
        EXPECT_EQ(call(root, path, INTROSPECTABLE, "Introspect"), "served") << path;
        EXPECT_EQ(call(root, path, PEER, "Ping"), "served") << path;
    }
}

TEST_F(PolicyForOthers, ServesNoSignalOfTheUserNobodyWhileTheDaemonStarts) {
    EXPECT_EQ(countStartsThatServed(attacksOf(DBUS_MESSAGE_TYPE_SIGNAL), STARTS), 0);
}

TEST_F(PolicyForOthers, ServesNoSignalOfTheGroupWhileTheDaemonStarts) {
    EXPECT_EQ(countStartsThatServed(attacksOf(DBUS_MESSAGE_TYPE_SIGNAL), FEW_STARTS, {idOfGroup()}), 0);
}

TEST_F(PolicyForOthers, ServesNoOtherMessageOfTheUserNobodyWhileTheDaemonStarts) {
    for (const int type : {DBUS_MESSAGE_TYPE_METHOD_CALL, DBUS_MESSAGE_TYPE_METHOD_RETURN, DBUS_MESSAGE_TYPE_ERROR}) {
        EXPECT_EQ(countStartsThatServed(attacksOf(type), FEW_STARTS), 0) << dbus_message_type_to_string(type);
    }
}

TEST_F(PolicyForOthers, ServesNothingOfTheUserNobodyOnceTheDaemonHasItsName) {
    RawPeer nobody = RawPeer::ofNobody();
    for (const int type : {DBUS_MESSAGE_TYPE_SIGNAL, DBUS_MESSAGE_TYPE_METHOD_CALL, DBUS_MESSAGE_TYPE_METHOD_RETURN,
                           DBUS_MESSAGE_TYPE_ERROR}) {
        EXPECT_FALSE(servesAny(attacksOf(type), nobody)) << dbus_message_type_to_string(type);
    }
}

TEST_F(PolicyForOthers, DeliversNoSignalOfTheUserNobodyForAnotherPath) {
    EXPECT_EQ(askForOwner(root), "served");
    RawPeer nobody = RawPeer::ofNobody();
    RawMessage death(dbus_message_new_signal(DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "NameOwnerChanged"));
    const std::string client = root.name();
    const char* const name = client.c_str();
    const char* const none = "";
    dbus_message_append_args(death.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &none,
                             DBUS_TYPE_INVALID);
    std::vector<RawMessage> forged;
    forged.push_back(std::move(death));
    EXPECT_FALSE(servesAny(forged, nobody));
    EXPECT_EQ(desk.countMessages("NameOwnerChanged signal received"), 0);
}

TEST_F(PolicyForOthers, ServesNoSignalOfThoseWhoMayCall) {
    RawPeer member = RawPeer::ofNobody({idOfGroup()});
    EXPECT_FALSE(servesAny(attacksOf(DBUS_MESSAGE_TYPE_SIGNAL), member));
    RawPeer ofRoot;
    EXPECT_FALSE(servesAny(attacksOf(DBUS_MESSAGE_TYPE_SIGNAL), ofRoot));
}

TEST_F(PolicyForOthers, RefusesEveryCallOfTheUserNobodyWithAnError) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    RawPeer nobody = RawPeer::ofNobody();
    EXPECT_EQ(askForOwner(nobody), DBUS_ERROR_ACCESS_DENIED);
    EXPECT_EQ(askForOwner(nobody, desk.uniqueNameOfDaemon()), DBUS_ERROR_ACCESS_DENIED);
    for (const char* const path : {"/", Names::OBJECT_PATH}) {
        EXPECT_EQ(call(nobody, path, INTROSPECTABLE, "Introspect"), DBUS_ERROR_ACCESS_DENIED) << path;
        EXPECT_EQ(call(nobody, path, PEER, "Ping"), DBUS_ERROR_ACCESS_DENIED) << path;
    }
}

// The bus starts nothing for a call that it denies.
TEST_F(PolicyForOthers, DoesNotLetTheUserNobodyStartTheDaemon) {
    RawPeer nobody = RawPeer::ofNobody();
    EXPECT_EQ(askForOwner(nobody), DBUS_ERROR_ACCESS_DENIED);
    EXPECT_EQ(desk.daemon(), 0);
    EXPECT_EQ(desk.daemonLog(), "");
}

// A call without a destination reaches nobody.
TEST_F(PolicyForOthers, ServesNoCallWithoutADestination) {
    const auto daemon = desk.startDaemon();
    ASSERT_TRUE(desk.waitForDaemon());
    RawPeer nobody = RawPeer::ofNobody();
    for (const RawMessage& attack : attacksOf(DBUS_MESSAGE_TYPE_METHOD_CALL)) {
        dbus_message_set_no_reply(attack.get(), false);
        EXPECT_THAT(outcomeOf(nobody, *attack), StartsWith("org.freedesktop.DBus.Error."));
    }
    EXPECT_EQ(askForOwner(root), "served");
    EXPECT_EQ(desk.countMessages("Registering new connection named "), 1);
}

TEST_F(PolicyForOthers, LetsTheGroupCallTheObject) {
    RawPeer member = RawPeer::ofNobody({ANOTHER_GROUP, idOfGroup()});
    EXPECT_EQ(askForOwner(member), "served");
    EXPECT_EQ(call(member, Names::OBJECT_PATH, INTROSPECTABLE, "Introspect"), "served");
    EXPECT_EQ(call(member, Names::OBJECT_PATH, PEER, "Ping"), "served");
}

TEST_F(PolicyForOthers, LetsTheGroupNeitherCallAnotherObjectNorOwnTheName) {
    RawPeer member = RawPeer::ofNobody({idOfGroup()});
    EXPECT_EQ(call(member, "/", INTROSPECTABLE, "Introspect"), DBUS_ERROR_ACCESS_DENIED);
    EXPECT_THROW(member.requestName(Names::CONNECTION_NAME), std::runtime_error);
}

} // namespace
} // namespace DAX::Tests
