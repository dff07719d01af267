#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerSubscriber.h"

#include "PowerFixture.h"

namespace DAX {
namespace Tests {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class FailingSubscriber : public Platform::PowerSubscriber<void()> {
public:
    ~FailingSubscriber() override { unsubscribeAtEnd("FailingSubscriber"); }

    using PowerSubscriber::getExpectedExecutorThreadID;

private:
    void doSubscribe() override {}
    int doUnsubscribe() override { DAX_THROW(Common::Utils::GenericException(), "the device is gone"); }
};

class PowerSubscriberTest : public PowerFixture {};

TEST_F(PowerSubscriberTest, ExpectsTheMainLoopsThread) {
    FailingSubscriber subscriber;
    EXPECT_TRUE(subscriber.getExpectedExecutorThreadID() == boost::this_thread::get_id());
}

TEST_F(PowerSubscriberTest, LogsAnExceptionAtItsEndAndLetsNoneOut) {
    {
        FailingSubscriber subscriber;
        subscriber.subscribe([] {});
    }
    EXPECT_THAT(FakeKovan::messages("ERR"), ElementsAre(AllOf(StartsWith("Exception was caught in FailingSubscriber: "),
                                                              HasSubstr("the device is gone"))));
}

} // namespace
} // namespace Tests
} // namespace DAX
