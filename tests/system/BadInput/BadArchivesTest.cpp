// Corrupt archives, for every method.
#include "ClientUnderTest.h"
#include "support/Corruption.h"

namespace DAX::Tests {
namespace {

using testing::HasSubstr;

class BadArchives : public ClientUnderTest {
protected:
    // Sends each message that `corrupt` makes of the good message of each method.
    template <class Corrupt>
    void askAll(Corrupt corrupt) {
        for (const ServiceMethod& method : serviceMethods()) {
            for (const std::string& message : corrupt(goodRequest(method))) {
                askAndRestore(method, message);
                ASSERT_FALSE(HasFailure()) << method.name << " " << testing::PrintToString(message.substr(0, 200));
            }
        }
    }

    // Checks that each method that reads its parameters refuses each of the messages as unreadable.
    template <class Corrupt>
    void expectUnreadable(Corrupt corrupt) {
        for (const ServiceMethod& method : serviceMethods()) {
            for (const std::string& message : corrupt(goodRequest(method))) {
                const Answer answer = askAndRestore(method, message);
                if (readsParameters(method)) {
                    ASSERT_EQ(answer.function, "DAXUnknownException") << method.name << " " << message;
                    ASSERT_THAT(answer.diagnostic(), HasSubstr("archive_exception")) << method.name;
                } else {
                    ASSERT_TRUE(answer.isReply()) << method.name;
                }
            }
        }
    }

    static std::string behindHeader(const std::string& good) { return good.empty() ? "" : good.substr(28); }
};

TEST_F(BadArchives, MayBeCutAtEveryByte) {
    askAll(cutsOf);
}

TEST_F(BadArchives, MayHaveEveryByteChanged) {
    askAll([](const std::string& good) { return changesOf(good, FEW_TELLING_BYTES); });
}

TEST_F(BadArchives, MayDeclareEveryLengthAsHuge) {
    askAll([](const std::string& good) { return tokenChangesOf(good, HUGE_LENGTHS); });
}

TEST_F(BadArchives, MayHoldNumbersOutOfRange) {
    askAll([](const std::string& good) { return tokenChangesOf(good, NUMBERS_OUT_OF_RANGE); });
}

TEST_F(BadArchives, MayBeAMegabyteOfNoise) {
    const std::vector<std::string> megabytes = noise(1 << 20);
    askAll([&megabytes](const std::string&) { return megabytes; });
}

TEST_F(BadArchives, AreRefusedWhenTheyAreEmpty) {
    expectUnreadable([](const std::string&) { return std::vector<std::string>{""}; });
}

TEST_F(BadArchives, AreRefusedWithAVersionThatIsNotKnown) {
    expectUnreadable([](const std::string& good) {
        std::vector<std::string> messages;
        for (const std::string version : {"19", "65535", "65536", "-1", "4294967296"}) {
            messages.push_back("22 serialization::archive " + version + behindHeader(good));
        }
        return messages;
    });
}

TEST_F(BadArchives, AreRefusedWithASignatureOfHugeLength) {
    expectUnreadable([](const std::string& good) {
        std::vector<std::string> messages;
        for (const std::string& length : HUGE_LENGTHS) {
            messages.push_back(length + " serialization::archive 18" + behindHeader(good));
        }
        return messages;
    });
}

TEST_F(BadArchives, AreReadWhateverFollowsThem) {
    for (const ServiceMethod& method : serviceMethods()) {
        const Answer expected = askAndRestore(method, goodRequest(method));
        for (const std::string& rest : {std::string("\n"), std::string(" 1 2 3"), " " + noise(1000)[0]}) {
            const Answer answer = askAndRestore(method, goodRequest(method) + rest);
            EXPECT_EQ(answer.type, expected.type) << method.name;
            EXPECT_EQ(answer.function, expected.function) << method.name;
        }
    }
}

} // namespace
} // namespace DAX::Tests
