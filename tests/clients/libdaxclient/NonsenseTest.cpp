// Services that answer nonsense, leave, are slow or are of another version.
#include <chrono>
#include <set>

#include <gmock/gmock.h>

#include "FakeService.h"
#include "Steps.h"
#include "support/PrivateBus.h"
#include "support/ServiceContract.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using std::chrono::milliseconds;
using Reason = dax::Unreachable::Reason;

const std::string HEADER = "22 serialization::archive 18";

// What the step ends in. The test fails for every exception that is no dax::Failure.
std::string endOf(const std::function<void()>& run) {
    try {
        run();
    } catch (const dax::Refusal&) {
        return "refusal";
    } catch (const dax::Error&) {
        return "error";
    } catch (const dax::Unreachable& failure) {
        return "unreachable " + std::to_string(static_cast<int>(failure.reason()));
    }
    return "good";
}

std::string unreachable(Reason reason) {
    return "unreachable " + std::to_string(static_cast<int>(reason));
}

class Nonsense : public TestWithParam<Step> {
protected:
    static dax::Options withTimeout(milliseconds timeout) {
        dax::Options options;
        options.callTimeout = timeout;
        return options;
    }

    std::string endWith(FakeService::Answer answer) {
        service.answer(GetParam().method, std::move(answer));
        return endOf([this] { GetParam().run(*open); });
    }

    PrivateBus bus;
    FakeService service;
    std::unique_ptr<OpenClient> open = std::make_unique<OpenClient>(withTimeout(std::chrono::seconds(20)));
};

TEST(Steps, AreOneForEachMethod) {
    std::set<std::string> methods;
    for (const Step& step : steps()) {
        EXPECT_TRUE(methods.insert(step.method).second) << step.method;
    }
    for (const ServiceMethod& method : serviceMethods()) {
        EXPECT_EQ(methods.erase(method.name), 1U) << method.name;
    }
    EXPECT_THAT(methods, IsEmpty());
}

TEST_P(Nonsense, GoodAnswersAreGood) {
    EXPECT_EQ(endOf([this] { GetParam().run(*open); }), "good");
}

TEST_P(Nonsense, AnswersThatAreCutAtAnyByteAreAnErrorAtWorst) {
    const std::string whole = golden("service/" + GetParam().method + ".reply");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_THAT(endWith(FakeService::archive(whole.substr(0, length))), AnyOf("good", "error", "refusal"))
            << length;
    }
    EXPECT_EQ(endWith(FakeService::archive(whole)), "good") << "the objects are no longer usable";
}

TEST_P(Nonsense, AnswersWithAnyOtherByteAreAnErrorAtWorst) {
    const std::string whole = golden("service/" + GetParam().method + ".reply");
    for (const char byte : {'\0', '9', '-', ' ', '\xff'}) {
        for (std::size_t i = 0; i < whole.size(); ++i) {
            std::string changed = whole;
            changed[i] = byte;
            EXPECT_THAT(endWith(FakeService::archive(changed)),
                        AnyOf("good", "error", "refusal", unreachable(Reason::NO_SERVICE)))
                << i << " " << static_cast<int>(byte);
        }
    }
}

TEST_P(Nonsense, HugeLengthsAreAnErrorAtWorst) {
    for (const char* const number :
         {"2147483648", "4294967295", "9223372036854775807", "18446744073709551615", "99999999999999999999999", "-1"}) {
        for (const std::string& before : {HEADER + " ", HEADER + " 0 0 ", HEADER + " 0 1 1 ", std::string()}) {
            EXPECT_THAT(endWith(FakeService::archive(before + number + " 0 x")), AnyOf("good", "error", "refusal"))
                << before << number;
        }
    }
}

TEST_P(Nonsense, AnswersOfAnotherTypeAreNoServices) {
    const auto with = [](int type, const void* value) {
        return [type, value](DBusMessage& call) {
            RawMessage reply(dbus_message_new_method_return(&call));
            dbus_message_append_args(reply.get(), type, value, DBUS_TYPE_INVALID);
            return reply;
        };
    };
    const char* const text = "REPLY";
    const dbus_uint32_t number = 7;
    EXPECT_EQ(endWith(with(DBUS_TYPE_STRING, &text)), unreachable(Reason::NO_SERVICE));
    EXPECT_EQ(endWith(with(DBUS_TYPE_UINT32, &number)), unreachable(Reason::NO_SERVICE));
    EXPECT_EQ(endWith(FakeService::arrays({"REPLY"})), unreachable(Reason::NO_SERVICE));
    EXPECT_THAT(endWith(FakeService::arrays({})), AnyOf("good", "error", "refusal"));
}

TEST_P(Nonsense, AnExceptionOfAnotherVersionIsAnErrorWithItsName) {
    const std::string archive = HEADER + " 3 U-7 12 It is broken 0 0";
    service.answer(GetParam().method, FakeService::exception("CNewException", archive));
    try {
        GetParam().run(*open);
        FAIL() << "nothing was thrown";
    } catch (const dax::Error& error) {
        EXPECT_EQ(error.kind(), dax::Error::Kind::UNKNOWN);
        EXPECT_EQ(error.name(), "CNewException");
        EXPECT_EQ(error.supportCode(), "U-7");
        EXPECT_EQ(error.diagnostic(), "It is broken");
    }
}

TEST_P(Nonsense, AnExceptionThatCannotBeReadIsAnError) {
    for (const std::string& name : wireExceptionNames()) {
        EXPECT_EQ(endWith(FakeService::exception(name, "")), "error") << name;
        EXPECT_EQ(endWith(FakeService::exception(name, HEADER + " 99999 x")), "error") << name;
    }
    EXPECT_EQ(endWith(FakeService::exception("Invalid arguments.", "Nothing to add.")), "error");
    EXPECT_EQ(endWith(FakeService::exception("", "")), "error");
}

TEST_P(Nonsense, AServiceThatLeavesInsteadOfAnAnswerIsNone) {
    service.leaveAt(GetParam().method);
    EXPECT_EQ(endOf([this] { GetParam().run(*open); }), unreachable(Reason::NO_SERVICE));
    const auto begin = std::chrono::steady_clock::now();
    open.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10)) << "the destructors wait";
}

TEST_P(Nonsense, AServiceThatDoesNotAnswerInTimeIsToldByTheTimeOut) {
    const auto impatient = inTime([] { return std::make_unique<OpenClient>(withTimeout(milliseconds(500))); });
    service.answer(GetParam().method, FakeService::nothing());
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(endOf([&] { GetParam().run(*impatient); }), unreachable(Reason::TIMED_OUT));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(500));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    service.answerWell(GetParam().method); // the other client is patient
}

TEST_P(Nonsense, TheBusSaysWhyItDoesNotPassTheCall) {
    const auto prefixed = [](const char* name) { return std::string("org.freedesktop.DBus.Error.") + name; };
    EXPECT_EQ(endWith(FakeService::error(prefixed("AccessDenied"), "Not for you.")), unreachable(Reason::NOT_ALLOWED));
    EXPECT_EQ(endWith(FakeService::error(prefixed("LimitsExceeded"), "Full.")), unreachable(Reason::NOT_ALLOWED));
    EXPECT_EQ(endWith(FakeService::error(prefixed("ServiceUnknown"), "Nobody.")), unreachable(Reason::NO_SERVICE));
    EXPECT_EQ(endWith(FakeService::error(prefixed("TimedOut"), "It does not start.")), unreachable(Reason::NO_SERVICE));
    EXPECT_EQ(endWith(FakeService::error(prefixed("UnknownMethod"), "What?")), unreachable(Reason::NO_SERVICE));
}

INSTANTIATE_TEST_SUITE_P(AtEveryStep, Nonsense, ValuesIn(steps()), [](const auto& row) { return row.param.method; });

} // namespace
} // namespace DAX::Tests
