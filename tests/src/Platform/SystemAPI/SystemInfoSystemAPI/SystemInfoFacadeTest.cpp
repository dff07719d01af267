#include <memory>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfo.h"
#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfoImpl.h"
#include "support/FakeKovan.h"
#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemInfo;
using Platform::ISystemInfoImpl;
using testing::ElementsAre;

// Records each call with its argument. The answer is the call's name where it is a text, 42 where it is a number.
class OtherInfo : public ISystemInfoImpl {
public:
    explicit OtherInfo(std::vector<std::string>& calls) : m_calls(calls) {}

    std::string m_getDuid() override { return text("getDuid"); }
    std::string m_getAtoken() override { return text("getAtoken"); }
    std::string m_getOtnUrl() override { return text("getOtnUrl"); }
    bool m_isTermsConditionsAccepted() override { return told("isTermsConditionsAccepted"); }
    std::string m_getFirmwareVersion() override { return text("getFirmwareVersion"); }
    std::string m_getCountryCode() override { return text("getCountryCode"); }
    int m_getSystemInfoInt(int key) override { return number("getSystemInfoInt", key); }
    bool m_getSystemInfoBool(int key) override { return told("getSystemInfoBool", key); }
    std::string m_getSystemInfoString(int key) override { return text("getSystemInfoString", key); }
    bool m_getSystemInfoCustomBool(const char* key) override { return told("getSystemInfoCustomBool", key); }
    int m_getSystemInfoCustomInt(const char* key) override { return number("getSystemInfoCustomInt", key); }
    std::string m_getSystemInfoCustomString(const char* key) override { return text("getSystemInfoCustomString", key); }
    std::string m_getFlashedSubModelString() override { return text("getFlashedSubModelString"); }
    void m_setFlashedSubModelString(const std::string& submodel) override {
        told("setFlashedSubModelString", submodel);
    }
    std::string m_getSelectedSubModelString(ISystemInfo::ZoneType zone) override {
        return text("getSelectedSubModelString", zone);
    }
    std::string m_getSelectedSubModelOrEmptyString() override { return text("getSelectedSubModelOrEmptyString"); }
    void m_setSelectedSubModelString(const std::string& submodel) override {
        told("setSelectedSubModelString", submodel);
    }
    bool m_isAnySubmodelSelected() override { return told("isAnySubmodelSelected"); }
    bool m_isAnySubmodelFound() override { return told("isAnySubmodelFound"); }
    void m_setAnySubmodelFlag(bool found) override { told("setAnySubmodelFlag", found); }
    void m_saveCurrentVersionString() override { told("saveCurrentVersionString"); }
    std::string m_loadCurrentVersionString() override { return text("loadCurrentVersionString"); }
    void m_setMsdFolderPath(const std::string& folder) override { told("setMsdFolderPath", folder); }
    std::string m_getMsdFolderPath() override { return text("getMsdFolderPath"); }
    void m_setMsdVersions(const std::string& versions) override { told("setMsdVersions", versions); }
    std::string m_getMsdVersions() override { return text("getMsdVersions"); }
    bool m_isHighContrastMode() override { return told("isHighContrastMode"); }
    int m_getAccessibilityActCustomTimeout(int defaultSeconds) override {
        return number("getAccessibilityActCustomTimeout", defaultSeconds);
    }

private:
    template <class... Arguments>
    bool told(const std::string& name, const Arguments&... arguments) {
        std::ostringstream call;
        call << name;
        ((call << ' ' << arguments), ...);
        m_calls.push_back(call.str());
        return true;
    }
    template <class... Arguments>
    std::string text(const std::string& name, const Arguments&... arguments) {
        told(name, arguments...);
        return name;
    }
    template <class... Arguments>
    int number(const std::string& name, const Arguments&... arguments) {
        told(name, arguments...);
        return 42;
    }

    std::vector<std::string>& m_calls;
};

class SystemInfoFacadeTest : public testing::Test {
protected:
    SystemInfoFacadeTest() {
        Platform::SystemInfo::Details::setImplementationSingleton(std::make_unique<OtherInfo>(calls));
    }
    ~SystemInfoFacadeTest() override { Platform::SystemInfo::Details::setImplementationSingleton(nullptr); }

    std::vector<std::string> calls;
};

TEST_F(SystemInfoFacadeTest, GivesTheTextsOfItsImplementation) {
    EXPECT_EQ(ISystemInfo::getDuid(), "getDuid");
    EXPECT_EQ(ISystemInfo::getAtoken(), "getAtoken");
    EXPECT_EQ(ISystemInfo::getOtnUrl(), "getOtnUrl");
    EXPECT_EQ(ISystemInfo::getFirmwareVersion(), "getFirmwareVersion");
    EXPECT_EQ(ISystemInfo::getCountryCode(), "getCountryCode");
    EXPECT_EQ(ISystemInfo::getSystemInfoString(7), "getSystemInfoString");
    EXPECT_EQ(ISystemInfo::getSystemInfoCustomString("key"), "getSystemInfoCustomString");
    EXPECT_EQ(ISystemInfo::getFlashedSubModelString(), "getFlashedSubModelString");
    EXPECT_EQ(ISystemInfo::getSelectedSubModelString(ISystemInfo::AS_STORED), "getSelectedSubModelString");
    EXPECT_EQ(ISystemInfo::getSelectedSubModelOrEmptyString(), "getSelectedSubModelOrEmptyString");
    EXPECT_EQ(ISystemInfo::loadCurrentVersionString(), "loadCurrentVersionString");
    EXPECT_EQ(ISystemInfo::getMsdFolderPath(), "getMsdFolderPath");
    EXPECT_EQ(ISystemInfo::getMsdVersions(), "getMsdVersions");
}

TEST_F(SystemInfoFacadeTest, GivesTheNumbersOfItsImplementation) {
    EXPECT_TRUE(ISystemInfo::isTermsConditionsAccepted());
    EXPECT_EQ(ISystemInfo::getSystemInfoInt(7), 42);
    EXPECT_TRUE(ISystemInfo::getSystemInfoBool(7));
    EXPECT_TRUE(ISystemInfo::getSystemInfoCustomBool("key"));
    EXPECT_EQ(ISystemInfo::getSystemInfoCustomInt("key"), 42);
    EXPECT_TRUE(ISystemInfo::isAnySubmodelSelected());
    EXPECT_TRUE(ISystemInfo::isAnySubmodelFound());
    EXPECT_TRUE(ISystemInfo::isHighContrastMode());
    EXPECT_EQ(ISystemInfo::getAccessibilityActCustomTimeout(7), 42);
}

TEST_F(SystemInfoFacadeTest, PassesItsArgumentsOn) {
    ISystemInfo::getSystemInfoInt(1);
    ISystemInfo::getSystemInfoBool(2);
    ISystemInfo::getSystemInfoString(3);
    ISystemInfo::getSystemInfoCustomBool("a");
    ISystemInfo::getSystemInfoCustomInt("b");
    ISystemInfo::getSystemInfoCustomString("c");
    ISystemInfo::setFlashedSubModelString("d");
    ISystemInfo::getSelectedSubModelString(ISystemInfo::AS_STORED);
    ISystemInfo::setSelectedSubModelString("e");
    ISystemInfo::setAnySubmodelFlag(true);
    ISystemInfo::saveCurrentVersionString();
    ISystemInfo::setMsdFolderPath("f");
    ISystemInfo::setMsdVersions("g");
    ISystemInfo::getAccessibilityActCustomTimeout(4);
    EXPECT_THAT(calls,
                ElementsAre("getSystemInfoInt 1", "getSystemInfoBool 2", "getSystemInfoString 3",
                            "getSystemInfoCustomBool a", "getSystemInfoCustomInt b", "getSystemInfoCustomString c",
                            "setFlashedSubModelString d", "getSelectedSubModelString 1", "setSelectedSubModelString e",
                            "setAnySubmodelFlag 1", "saveCurrentVersionString", "setMsdFolderPath f",
                            "setMsdVersions g", "getAccessibilityActCustomTimeout 4"));
}

TEST_F(SystemInfoFacadeTest, AsksTheDeviceAgainWithoutAnother) {
    Platform::SystemInfo::Details::setImplementationSingleton(nullptr);
    FakeKovan::setSystemInfo(7, 17);
    EXPECT_EQ(ISystemInfo::getSystemInfoInt(7), 17);
}

TEST(SystemInfoSlots, StandInTheirOrder) {
    using Info = ISystemInfoImpl;
    EXPECT_EQ(slotsOf(&Info::m_getDuid, &Info::m_getAtoken, &Info::m_getOtnUrl, &Info::m_isTermsConditionsAccepted,
                      &Info::m_getFirmwareVersion, &Info::m_getCountryCode, &Info::m_getSystemInfoInt,
                      &Info::m_getSystemInfoBool, &Info::m_getSystemInfoString, &Info::m_getSystemInfoCustomBool,
                      &Info::m_getSystemInfoCustomInt, &Info::m_getSystemInfoCustomString,
                      &Info::m_getFlashedSubModelString, &Info::m_setFlashedSubModelString,
                      &Info::m_getSelectedSubModelString, &Info::m_getSelectedSubModelOrEmptyString,
                      &Info::m_setSelectedSubModelString, &Info::m_isAnySubmodelSelected, &Info::m_isAnySubmodelFound,
                      &Info::m_setAnySubmodelFlag, &Info::m_saveCurrentVersionString, &Info::m_loadCurrentVersionString,
                      &Info::m_setMsdFolderPath, &Info::m_getMsdFolderPath, &Info::m_setMsdVersions,
                      &Info::m_getMsdVersions, &Info::m_isHighContrastMode, &Info::m_getAccessibilityActCustomTimeout),
              slotsBehindTheDestructor(28));
}

} // namespace
} // namespace DAX::Tests
