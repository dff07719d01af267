#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEvents.h"
#include "support/FakeKovan.h"

using namespace DAX::Platform::KpiEvent;
using testing::ElementsAre;

namespace {

bool isLoggerThere = true;

} // namespace

extern "C" void* __real__ZN18MetricLogFramework7CLogger11GetInstanceEv();
extern "C" void* __wrap__ZN18MetricLogFramework7CLogger11GetInstanceEv();

void* __wrap__ZN18MetricLogFramework7CLogger11GetInstanceEv() {
    return isLoggerThere ? __real__ZN18MetricLogFramework7CLogger11GetInstanceEv() : nullptr;
}

namespace {

const CErrorEvent EVENT("File.cpp", "void f()", "12", "a == b", "they differ");

TEST(CErrorEventTest, HasItsCodeNameAndDescription) {
    EXPECT_EQ(EVENT.getCode(), "EV008");
    EXPECT_EQ(EVENT.getName(), "ERROR");
    EXPECT_EQ(EVENT.getDescription(), "{file=File.cpp;func=void f();line=12;expr=a == b;msg=they differ}");
}

TEST(KPIEventSenderTest, SendsTheApplicationTheNameTheCodeAndTheDescription) {
    sendKPIEventToServer(EVENT);

    ASSERT_EQ(FakeKovan::events().size(), 1u);
    const FakeKovan::Event sent = FakeKovan::events()[0];
    EXPECT_EQ(sent.application, "23_daxinfo");
    EXPECT_EQ(sent.name, "ERROR");
    EXPECT_EQ(sent.code, "EV008");
    EXPECT_EQ(sent.description, EVENT.getDescription());
}

TEST(KPIEventSenderTest, LogsWhatItSentAfterwards) {
    sendKPIEventToServer(EVENT);

    EXPECT_THAT(FakeKovan::journal(), ElementsAre("event ERROR EV008", "log INF AddEventLog : 23_daxinfo,ERROR,EV008," +
                                                                           EVENT.getDescription()));
}

TEST(KPIEventSenderTest, LogsOneFatalLineForAFailedSendAndRaisesNothing) {
    FakeKovan::setEventResult(-3);
    EXPECT_NO_THROW(sendKPIEventToServer(EVENT));

    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("event ERROR EV008", "log FTL KPI event send fail : (ERROR) Code(-3)"));
}

TEST(KPIEventSenderTest, TakesAnyResultButOneForAFailure) {
    for (const int result : {0, 2}) {
        FakeKovan::setEventResult(result);
        sendKPIEventToServer(EVENT);
    }

    EXPECT_THAT(FakeKovan::messages(),
                ElementsAre("KPI event send fail : (ERROR) Code(0)", "KPI event send fail : (ERROR) Code(2)"));
}

TEST(KPIEventSenderTest, TakesAMissingLoggerForAFailure) {
    isLoggerThere = false;
    sendKPIEventToServer(EVENT);
    isLoggerThere = true;

    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log FTL KPI event send fail : (ERROR) Code(0)"));
}

} // namespace
