// The private bus with a system bus's rules.
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "support/PrivateBus.h"
#include "support/RawPeer.h"

namespace DAX::Tests {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

const char* const MACHINES_CONFIGURATION = "/usr/share/dbus-1/system.conf";
const char* const BUS = "org.freedesktop.DBus";

// The elements of all policies in a configuration, without comments and superfluous blanks.
std::vector<std::string> rulesIn(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    std::string plain = std::regex_replace(text.str(), std::regex("<!--[^]*?-->"), "");
    plain = std::regex_replace(plain, std::regex("\\s+(/?>)|(\\s)\\s*"), "$1$2");
    plain = std::regex_replace(plain, std::regex("\\s"), " ");
    const std::regex element("<(/?policy|allow|deny)[^>]*>");
    std::vector<std::string> rules;
    for (std::sregex_iterator rule(plain.begin(), plain.end(), element), end; rule != end; ++rule) {
        rules.push_back(rule->str());
    }
    return rules;
}

RawMessage callBus(RawPeer& peer, const char* method, const std::string& argument) {
    RawMessage call(dbus_message_new_method_call(BUS, "/org/freedesktop/DBus", BUS, method));
    const char* text = argument.c_str();
    dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    return peer.call(*call);
}

std::string addMatch(RawPeer& peer, int number) {
    const RawMessage reply = callBus(peer, "AddMatch", "type='signal',member='Member" + std::to_string(number) + "'");
    const char* error = reply ? dbus_message_get_error_name(reply.get()) : "no reply";
    return error == nullptr ? "added" : error;
}

uid_t userOf(RawPeer& peer) {
    const RawMessage reply = callBus(peer, "GetConnectionUnixUser", peer.name());
    dbus_uint32_t user = 0;
    EXPECT_TRUE(dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_UINT32, &user, DBUS_TYPE_INVALID));
    return user;
}

TEST(SystemBusRulesTest, AreThoseOfTheDistribution) {
    if (!std::filesystem::exists(MACHINES_CONFIGURATION)) {
        GTEST_SKIP() << "this machine has no " << MACHINES_CONFIGURATION;
    }
    EXPECT_THAT(rulesIn(MACHINES_CONFIGURATION), Not(IsEmpty()));
    EXPECT_THAT(rulesIn(DISTRIBUTION_POLICY), ElementsAreArray(rulesIn(MACHINES_CONFIGURATION)));
}

TEST(SystemBusRulesTest, LetNobodyOwnANameThatNoPolicyGives) {
    const PrivateBus bus(SystemBusRules::ofDevice());
    RawPeer peer;
    EXPECT_EQ(peer.requestName("org.kovan.tv.dax.core.TV"), DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER);
    EXPECT_THROW(peer.requestName("org.kovan.tv.dax.other"), std::runtime_error);
}

TEST(SystemBusRulesTest, Allow512MatchRulesPerConnectionUnlessTheRulesSayOtherwise) {
    {
        const PrivateBus bus(SystemBusRules::ofDevice());
        RawPeer peer;
        for (int rule = 1; rule <= 512; ++rule) {
            ASSERT_EQ(addMatch(peer, rule), "added") << rule;
        }
        EXPECT_EQ(addMatch(peer, 513), DBUS_ERROR_LIMITS_EXCEEDED);
    }
    const PrivateBus bus(SystemBusRules::ofDevice({{"max_match_rules_per_connection", 1}}));
    RawPeer peer;
    EXPECT_EQ(addMatch(peer, 1), "added");
    EXPECT_EQ(addMatch(peer, 2), DBUS_ERROR_LIMITS_EXCEEDED);
}

TEST(SystemBusRulesTest, LetAPeerOfTheUserNobodyConnectWithItsRights) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root, to make a connection as nobody";
    }
    const PrivateBus bus(SystemBusRules::ofDevice());
    RawPeer nobody = RawPeer::ofNobody();
    RawPeer ours;

    EXPECT_EQ(userOf(nobody), 65534U);
    EXPECT_EQ(userOf(ours), 0U);
    EXPECT_EQ(geteuid(), 0U);
    EXPECT_EQ(getegid(), getgid());
    EXPECT_THROW(nobody.requestName("org.kovan.tv.dax.core.TV"), std::runtime_error);
}

} // namespace
} // namespace DAX::Tests
