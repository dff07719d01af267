#include "monitor/BoundedMap.h"

#include <string>

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

TEST(BoundedMap, ForgetsTheOldestEntryWhenItIsFull) {
    monitor::BoundedMap<int, std::string> map(2);
    map.set(1, "one");
    map.set(2, "two");
    map.set(3, "three");
    EXPECT_EQ(map.find(1), nullptr);
    EXPECT_EQ(*map.find(2), "two");
    EXPECT_EQ(*map.find(3), "three");
    EXPECT_EQ(map.size(), 2U);
}

TEST(BoundedMap, TakesAnEntryThatIsSetAgainForNew) {
    monitor::BoundedMap<int, std::string> map(2);
    map.set(1, "one");
    map.set(2, "two");
    map.set(1, "uno");
    map.set(3, "three");
    EXPECT_EQ(*map.find(1), "uno");
    EXPECT_EQ(map.find(2), nullptr);
}

TEST(BoundedMap, ForgetsWhatIsErased) {
    monitor::BoundedMap<int, std::string> map(2);
    map.set(1, "one");
    map.erase(1);
    map.erase(5);
    EXPECT_EQ(map.find(1), nullptr);
    EXPECT_EQ(map.size(), 0U);
}

} // namespace
} // namespace DAX::Tests
