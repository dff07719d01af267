#include "clients_common/NearestWord.h"

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using clients_common::nearestWord;

const std::vector<std::string> METHODS = {"getService", "getServiceOwner", "startSearching", "cancelCoreTransaction"};

TEST(NearestWord, DiffersByAFewSlips) {
    EXPECT_EQ(nearestWord("getServise", METHODS), "getService");
    EXPECT_EQ(nearestWord("cancelTransaction", METHODS), "cancelCoreTransaction");
}

TEST(NearestWord, MayBeWrittenInOtherCase) {
    EXPECT_EQ(nearestWord("startsearching", METHODS), "startSearching");
    EXPECT_EQ(nearestWord("STARTSERCHING", METHODS), "startSearching");
}

TEST(NearestWord, MayBeBegunOnly) {
    EXPECT_EQ(nearestWord("getserviceo", METHODS), "getServiceOwner");
}

TEST(NearestWord, IsNoneThatIsFarAway) {
    EXPECT_EQ(nearestWord("xyz", METHODS), std::nullopt);
    EXPECT_EQ(nearestWord("searching", METHODS), std::nullopt);
    EXPECT_EQ(nearestWord("", METHODS), std::nullopt);
}

TEST(NearestWord, IsNotLookedForInALongText) {
    EXPECT_EQ(nearestWord(std::string(100000, 'g'), METHODS), std::nullopt);
}

} // namespace
} // namespace DAX::Tests
