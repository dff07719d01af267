#include "Utility/Utils/SingletonProperty.h"

#include <atomic>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "support/OtherThread.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::Utils::errinfo_stream_text;
using Common::Utils::GenericException;
using Common::Utils::SingletonProperty;

class Only : private SingletonProperty<Only> {};
class Other : private SingletonProperty<Other> {};

class Broken : private SingletonProperty<Broken> {
public:
    explicit Broken(bool throws) {
        if (throws) {
            throw std::domain_error("broken");
        }
    }
};

std::string textOfASecondOne() {
    return thrownText<errinfo_stream_text>([] { const Only second; });
}

TEST(SingletonPropertyTest, RefusesASecondObject) {
    const Only only;
    EXPECT_EQ(textOfASecondOne(), "Object of this type is already created. It should never happen!");
}

TEST(SingletonPropertyTest, RefusesAThirdObjectAfterTheSecond) {
    const Only only;
    textOfASecondOne();
    EXPECT_EQ(textOfASecondOne(), "Object of this type is already created. It should never happen!");
}

TEST(SingletonPropertyTest, NamesThePlaceOfTheRefusal) {
    const Only only;
    try {
        const Only second;
        FAIL();
    } catch (const GenericException& exception) {
        EXPECT_NE(*boost::get_error_info<boost::throw_function>(exception), nullptr);
    }
}

TEST(SingletonPropertyTest, AllowsAnotherObjectAfterTheFirst) {
    { const Only first; }
    EXPECT_NO_THROW(Only());
}

TEST(SingletonPropertyTest, AllowsObjectsOfOtherClasses) {
    const Only only;
    EXPECT_NO_THROW(Other());
}

TEST(SingletonPropertyTest, AllowsAnotherObjectAfterOneThatFailed) {
    EXPECT_THROW(Broken(true), std::domain_error);
    EXPECT_NO_THROW(Broken(false));
}

TEST(SingletonPropertyTest, AllowsOneObjectOfManyThreads) {
    std::atomic<int> alive{0};
    const auto create = [&alive] {
        for (int i = 0; i < 200; ++i) {
            try {
                const Only only;
                EXPECT_EQ(++alive, 1);
                --alive;
            } catch (const GenericException&) { // another thread has it
            }
        }
    };
    std::vector<std::unique_ptr<OtherThread>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(std::make_unique<OtherThread>(create));
    }
}

} // namespace
} // namespace DAX::Tests
