#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEvents.h"

#include <climits>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using namespace Platform::KpiEvent;
using testing::ElementsAre;

// The codes that are written for the values from `first` to `last`.
template <class Enumeration>
std::vector<std::string> codesFrom(int first, int last) {
    std::vector<std::string> codes;
    for (int value = first; value <= last; ++value) {
        std::ostringstream text;
        text << static_cast<Enumeration>(value);
        codes.push_back(text.str());
    }
    return codes;
}

TEST(KPIEventCodes, WriteSearchMethods) {
    EXPECT_THAT(codesFrom<SearchMethod>(-1, 4), ElementsAre("f", "m", "b", "o", "e", "f"));
}

TEST(KPIEventCodes, WriteUpdateMethods) {
    EXPECT_THAT(codesFrom<UpdateMethod>(0, 8), ElementsAre("er", "fo", "au", "go", "es", "ma", "ex", "ob", "er"));
}

TEST(KPIEventCodes, WriteNotificationTypes) {
    EXPECT_THAT(codesFrom<NotificationType>(-1, 4), ElementsAre("na", "co", "ok", "fa", "sk", "na"));
}

TEST(KPIEventCodes, WriteInputTypes) {
    EXPECT_THAT(codesFrom<InputType>(0, 8), ElementsAre("er", "no", "la", "do", "ti", "ok", "de", "ig", "er"));
}

TEST(KPIEventCodes, WriteOsdTypes) {
    EXPECT_THAT(codesFrom<OsdType>(-1, 2), ElementsAre("er", "go", "de", "er"));
}

TEST(KPIEventCodes, WriteUserInputs) {
    EXPECT_THAT(codesFrom<COSUEvent::UserInput>(-1, 4), ElementsAre("er", "ti", "la", "no", "wo", "er"));
}

TEST(KPIEventCodes, WriteOSDTypesOfOSU) {
    EXPECT_THAT(codesFrom<COSUEvent::OSDTypeOSU>(-1, 4), ElementsAre("er", "go", "de", "ma", "us", "er"));
}

TEST(KPIEventCodes, WriteStatusesOfAllChanges) {
    EXPECT_THAT(codesFrom<COSUEvent::AllChangesStatus>(-1, 5), ElementsAre("er", "na", "no", "be", "sc", "en", "er"));
}

TEST(KPIEventCodes, WriteValuesFarOutside) {
    EXPECT_THAT(codesFrom<SearchMethod>(9, 9), ElementsAre("f"));
    EXPECT_THAT(codesFrom<InputType>(0, 0), ElementsAre("er"));
    EXPECT_THAT(codesFrom<OsdType>(INT_MIN, INT_MIN), ElementsAre("er"));
}

void expectEvent(const IKPIEvent& event, const std::string& code, const std::string& name,
                 const std::string& description) {
    EXPECT_EQ(event.getCode(), code);
    EXPECT_EQ(event.getName(), name);
    EXPECT_EQ(event.getDescription(), description);
}

TEST(KPIEvents, TellInfo) {
    expectEvent(CInfoEvent(true, 5, 2), "EV001", "INFO", "{au=1;cp=5;ty=o}");
    expectEvent(CInfoEvent(true, 5, 3), "EV001", "INFO", "{au=1;cp=5;ty=e}");
    expectEvent(CInfoEvent(false, -1, 0), "EV001", "INFO", "{au=0;cp=-1;ty=d}");
    expectEvent(CInfoEvent(false, 0, 1), "EV001", "INFO", "{au=0;cp=0;ty=e}");
}

TEST(KPIEvents, TellThatSomethingIsShown) {
    expectEvent(COSDShowEvent(NotificationType::FA), "EV005", "OSDSHOW", "{ty=fa}");
}

TEST(KPIEvents, TellAnInput) {
    expectEvent(COSDInputEvent(InputType::LA, OsdType::DE), "EV006", "OSDINPUT", "{in=la;ty=de}");
}

TEST(KPIEvents, TellAnInputOfOSU) {
    using Status = COSUEvent::AllChangesStatus;
    expectEvent(COSUEvent(COSUEvent::UserInput::WO, COSUEvent::OSDTypeOSU::US, Status::NO, Status::BE, Status::EN),
                "EV007", "OSU", "{in=wo;ty=us;ac=no;nc=be;wc=en}");
}

TEST(KPIEventSlots, StandInTheirOrder) {
    EXPECT_EQ(slotsOf(&IKPIEvent::getDescription), slotsBehindTheDestructor(1));
}

} // namespace
} // namespace DAX::Tests
