#include <gmock/gmock.h>

#include "Service/ServiceManager/Implementation/ExternalLocks.h"

namespace DAX::Tests {
namespace {

using Service::ServiceManager::describeHolders;
using Service::ServiceManager::ExternalLock;
using Service::ServiceManager::ExternalLocks;

const std::size_t LIMIT = 64 * 1024;

ExternalLocks locksOf(const std::vector<std::string>& names) {
    ExternalLocks locks;
    for (const std::string& name : names) {
        locks.emplace(static_cast<Service::ExternalLockId>(locks.size() + 1),
                      ExternalLock(name, DAXCommon::ServiceClientPriority(4)));
    }
    return locks;
}

TEST(ExternalLocksText, NamesEveryHolderAfterABlank) {
    EXPECT_EQ(describeHolders(locksOf({"app", "", "menu"})), " app  menu");
    EXPECT_EQ(describeHolders(locksOf({})), "");
}

TEST(ExternalLocksText, IsWholeUpToItsLimit) {
    const std::string name(LIMIT / 4 - 1, 'n');
    const std::string text = " " + name + " " + name + " " + name + " " + name;
    ASSERT_EQ(text.size(), LIMIT);
    EXPECT_EQ(describeHolders(locksOf({name, name, name, name})), text);
    EXPECT_EQ(describeHolders(locksOf({name, name, name, name, "last"})), text + " last");
}

TEST(ExternalLocksText, BeyondItsLimitCountsTheHoldersThatAreLeft) {
    const std::string name(LIMIT, 'n');
    EXPECT_EQ(describeHolders(locksOf({name})), " " + name);
    EXPECT_EQ(describeHolders(locksOf({name, "a"})), " " + name + ", and 1 more");
    EXPECT_EQ(describeHolders(locksOf({"a", name, "b", name, "c"})), " a " + name + ", and 3 more");
}

TEST(ExternalLocksText, OfManyLongNamesHoldsOne) {
    const std::vector<std::string> names(20, std::string(1024 * 1024, 'n'));
    EXPECT_EQ(describeHolders(locksOf(names)), " " + names.front() + ", and 19 more");
}

} // namespace
} // namespace DAX::Tests
