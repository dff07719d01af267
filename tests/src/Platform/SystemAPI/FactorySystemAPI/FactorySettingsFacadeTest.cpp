#include <memory>
#include <vector>

#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettings.h"
#include "Platform/SystemAPI/FactorySystemAPI/IFactorySettingsAPIImpl.h"
#include "support/FakeKovan.h"
#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using Platform::IFactorySettings;
using Platform::IFactorySettingsAPIImpl;
using testing::ElementsAre;

class OtherSettings : public IFactorySettingsAPIImpl {
public:
    explicit OtherSettings(std::vector<std::string>& calls) : m_calls(calls) {}

    bool isRetailTvOtnEnabled() override { return told("isRetailTvOtnEnabled", true); }
    bool isB2BTvOtnEnabled() override { return told("isB2BTvOtnEnabled", true); }
    boost::optional<char> getOTNZone() override { return told("getOTNZone", 'K'); }
    bool isDAXFailTestActive() override { return told("isDAXFailTestActive", true); }
    int getOTNServerType() override { return told("getOTNServerType", 105); }
    bool useShortOTATransactionTimeout() override { return told("useShortOTATransactionTimeout", true); }
    bool isOTAEnabled() override { return told("isOTAEnabled", true); }
    void factoryReset() override { told("factoryReset", true); }
    void prepareOsUpgrade() override { told("prepareOsUpgrade", true); }
    bool isFastBootInProductionMode() override { return told("isFastBootInProductionMode", true); }
    int getModelEnum() override { return told("getModelEnum", 111); }
    int getLocalsetEnum() override { return told("getLocalsetEnum", 112); }

private:
    template <class Answer>
    Answer told(const char* call, Answer answer) {
        m_calls.push_back(call);
        return answer;
    }

    std::vector<std::string>& m_calls;
};

class FactorySettingsFacadeTest : public testing::Test {
protected:
    FactorySettingsFacadeTest() {
        Platform::FactorySystemAPI::Details::setImplementationSingleton(std::make_unique<OtherSettings>(calls));
    }
    ~FactorySettingsFacadeTest() override { Platform::FactorySystemAPI::Details::setImplementationSingleton(nullptr); }

    std::vector<std::string> calls;
};

TEST_F(FactorySettingsFacadeTest, AsksTheImplementationThatIsPutIn) {
    EXPECT_TRUE(IFactorySettings::isRetailTvOtnEnabled());
    EXPECT_TRUE(IFactorySettings::isB2BTvOtnEnabled());
    EXPECT_EQ(IFactorySettings::getOTNZone(), 'K');
    EXPECT_TRUE(IFactorySettings::isDAXFailTestActive());
    EXPECT_EQ(IFactorySettings::getOTNServerType(), 105);
    EXPECT_TRUE(IFactorySettings::useShortOTATransactionTimeout());
    EXPECT_TRUE(IFactorySettings::isOTAEnabled());
    IFactorySettings::factoryReset();
    IFactorySettings::prepareOsUpgrade();
    EXPECT_TRUE(IFactorySettings::isFastBootInProductionMode());
    EXPECT_EQ(IFactorySettings::getModelEnum(), 111);
    EXPECT_EQ(IFactorySettings::getLocalsetEnum(), 112);
    EXPECT_THAT(calls,
                ElementsAre("isRetailTvOtnEnabled", "isB2BTvOtnEnabled", "getOTNZone", "isDAXFailTestActive",
                            "getOTNServerType", "useShortOTATransactionTimeout", "isOTAEnabled", "factoryReset",
                            "prepareOsUpgrade", "isFastBootInProductionMode", "getModelEnum", "getLocalsetEnum"));
}

TEST_F(FactorySettingsFacadeTest, AsksTheDeviceAgainWithoutAnother) {
    Platform::FactorySystemAPI::Details::setImplementationSingleton(nullptr);
    FakeKovan::setModelEnum(17);
    EXPECT_EQ(IFactorySettings::getModelEnum(), 17);
}

TEST(FactorySettingsSlots, StandInTheirOrder) {
    using Settings = IFactorySettingsAPIImpl;
    EXPECT_EQ(slotsOf(&Settings::isRetailTvOtnEnabled, &Settings::isB2BTvOtnEnabled, &Settings::getOTNZone,
                      &Settings::isDAXFailTestActive, &Settings::getOTNServerType,
                      &Settings::useShortOTATransactionTimeout, &Settings::isOTAEnabled, &Settings::factoryReset,
                      &Settings::prepareOsUpgrade, &Settings::isFastBootInProductionMode, &Settings::getModelEnum,
                      &Settings::getLocalsetEnum),
              slotsBehindTheDestructor(12));
}

} // namespace
} // namespace DAX::Tests
