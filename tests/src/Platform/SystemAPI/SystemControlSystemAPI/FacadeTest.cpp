#include <sstream>
#include <tuple>
#include <type_traits>

#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControlImpl.h"
#include "SystemControlTest.h"
#include "support/Slots.h"

namespace DAX::Tests {
namespace {

using boost::filesystem::path;
using Platform::ExternalAppVerificationResult;
using Platform::ISystemControl;
using Platform::ISystemControlImpl;
using Platform::ProcessPriority;
using testing::ElementsAre;

// Every operation in the order of the slots: its result, its name and its arguments. This is a macro because each row
// also declares an operation.
#define FOR_EACH_OPERATION(OPERATION)                                                                                  \
    OPERATION(const char*, DAXRevisionDescription, (), ())                                                             \
    OPERATION(void, shutdown, (), ())                                                                                  \
    OPERATION(void, forceShutdown, (), ())                                                                             \
    OPERATION(void, reboot, (), ())                                                                                    \
    OPERATION(void, rebootWithFactoryResetReason, (), ())                                                              \
    OPERATION(void, setColdShutdown, (), ())                                                                           \
    OPERATION(void, setColdShutdown, (const std::string& name), (name))                                                \
    OPERATION(int, setWakeUpReason, (int reason), (reason))                                                            \
    OPERATION(int, getWakeUpReason, (), ())                                                                            \
    OPERATION(bool, isWakeUpReasonDAX, (), ())                                                                         \
    OPERATION(bool, isWakeUpReasonStandbyScan, (), ())                                                                 \
    OPERATION(bool, isWakeUpReasonMobileBT, (), ())                                                                    \
    OPERATION(bool, isInStandaloneMode, (), ())                                                                        \
    OPERATION(void, requestStandaloneMode, (), ())                                                                     \
    OPERATION(bool, wasStandaloneModeRequested, (), ())                                                                \
    OPERATION(void, quitStandaloneMode, (), ())                                                                        \
    OPERATION(bool, isFactoryUpgradeEnabled, (), ())                                                                   \
    OPERATION(bool, isSequentialUpgradeEnabled, (), ())                                                                \
    OPERATION(path, getSequentialUpgradeDeviceMntPath, (), ())                                                         \
    OPERATION(void, setUpgradeStatusFlag, (bool success), (success))                                                   \
    OPERATION(void, setUpgradeVersion, (const std::string& version), (version))                                        \
    OPERATION(void, removeUpgradeStatusFlag, (), ())                                                                   \
    OPERATION(boost::optional<bool>, getUpgradeStatusFlag, (), ())                                                     \
    OPERATION(DAXCommon::PowerMode, getCurrentPowerMode, (), ())                                                       \
    OPERATION(void, setCurrentPowerMode, (DAXCommon::PowerMode mode, bool flag), (mode, flag))                         \
    OPERATION(bool, isAutoUpdateOptionActive, (), ())                                                                  \
    OPERATION(void, setAutoUpdateStatus, (DAXAutoUpdateKey::AUTOUPDATE_STATUS status), (status))                       \
    OPERATION(void, setOOBEAcceptedUpdateInfoDataId, (const std::string& id), (id))                                    \
    OPERATION(void, setUSBUIUpdateStatus, (const std::string& status), (status))                                       \
    OPERATION(void, setUSBUIUpdateProgress, (int progress), (progress))                                                \
    OPERATION(void, setAutoUpdateSpecialMode, (DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE mode), (mode))                \
    OPERATION(void, setIsBgOTNImportantUpdateEnabled, (bool enabled), (enabled))                                       \
    OPERATION(DAXAutoUpdateKey::AUTOUPDATE_STATUS, getAutoUpdateStatus, (), ())                                        \
    OPERATION(DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE, getAutoUpdateSpecialMode, (), ())                             \
    OPERATION(std::string, getOOBEAcceptedUpdateInfoDataId, (), ())                                                    \
    OPERATION(bool, getIsBgOTNImportantUpdateEnabled, (), ())                                                          \
    OPERATION(bool, isB2BTv, (), ())                                                                                   \
    OPERATION(bool, isChineseMainlandModel, (), ())                                                                    \
    OPERATION(bool, isCellularConnectionAllowed, (), ())                                                               \
    OPERATION(bool, wasAnySuccessfulUpgrade, (), ())                                                                   \
    OPERATION(void, registerSuccessfulUpgrade, (), ())                                                                 \
    OPERATION(ExternalAppVerificationResult, getExternalAppVerificationResult, (), ())                                 \
    OPERATION(void, setExternalAppVerificationResult, (ExternalAppVerificationResult result), (result))                \
    OPERATION(boost::optional<std::string>, getPendingExternalAppClientID, (), ())                                     \
    OPERATION(void, setPendingExternalAppClientID, (boost::optional<std::string> id), (id))                            \
    OPERATION(void, setDAXFinalizingUpgradeFlag, (bool set), (set))                                                    \
    OPERATION(void, setDAXResetFlag, (bool set), (set))                                                                \
    OPERATION(bool, getDAXResetFlag, (), ())                                                                           \
    OPERATION(void, setMonopolyFlag, (bool on), (on))                                                                  \
    OPERATION(bool, isOTNEnabled, (), ())                                                                              \
    OPERATION(bool, isOTAEnabled, (), ())                                                                              \
    OPERATION(void, setModifiedPartitionsMarker, (const std::string& unused), (unused))                                \
    OPERATION(bool, isModifiedPartitionsMarkerSet, (), ())                                                             \
    OPERATION(void, removeModifiedPartitionsMarker, (), ())                                                            \
    OPERATION(bool, isStandaloneOTNEnabled, (), ())                                                                    \
    OPERATION(bool, setProcessPriority, (ProcessPriority priority), (priority))                                        \
    OPERATION(bool, isPremiumModel, (), ())                                                                            \
    OPERATION(bool, isAccountSiginMandatory, (), ())                                                                   \
    OPERATION(int, getDetailsNotificationType, (), ())                                                                 \
    OPERATION(bool, isAutoUpdateAlwaysOn, (), ())                                                                      \
    OPERATION(bool, isPreUpdateConsentSet, (), ())                                                                     \
    OPERATION(bool, isPreUpdateConsentRequired, (), ())                                                                \
    OPERATION(void, setPreUpdateConsentRequired, (bool required), (required))                                          \
    OPERATION(bool, isMaintenanceMode, (), ())                                                                         \
    OPERATION(bool, isRetailMode, (), ())                                                                              \
    OPERATION(std::string, getAutoUpgradeTriggerKey, (), ())                                                           \
    OPERATION(bool, setAutoUpgradeTrigger, (), ())                                                                     \
    OPERATION(std::string, getWocOTNModelPrefix, (), ())

// Two answers and two arguments of each type. The tests run with both.
bool second = false;

template <class T>
T sample() {
    if constexpr (std::is_void<T>::value) {
        return;
    } else if constexpr (std::is_same<T, bool>::value) {
        return second;
    } else if constexpr (std::is_arithmetic<T>::value || std::is_enum<T>::value) {
        return static_cast<T>(second ? 3 : 1);
    } else if constexpr (std::is_same<T, boost::optional<bool>>::value) {
        return second;
    } else {
        return T(second ? "two" : "one");
    }
}

template <class T>
void append(std::ostream& text, const T& value) {
    if constexpr (std::is_enum<T>::value) {
        text << static_cast<int>(value);
    } else {
        text << value;
    }
}

std::vector<std::string> calls;

template <class... Arguments>
std::string callOf(const std::string& name, const std::tuple<Arguments...>& arguments) {
    std::ostringstream text;
    text << name;
    std::apply([&text](const auto&... each) { ((text << ' ', append(text, each)), ...); }, arguments);
    return text.str();
}

// Every operation records itself and answers with the sample of its type.
class RecordingControl : public ISystemControlImpl {
public:
#define RECORDING_OPERATION(RESULT, NAME, PARAMETERS, ARGUMENTS)                                                       \
    RESULT m_##NAME PARAMETERS override {                                                                              \
        calls.push_back(callOf(#NAME, std::make_tuple ARGUMENTS));                                                     \
        return sample<RESULT>();                                                                                       \
    }
    FOR_EACH_OPERATION(RECORDING_OPERATION)
#undef RECORDING_OPERATION
};

class SystemControlFacadeTest : public testing::TestWithParam<bool> {
protected:
    SystemControlFacadeTest() {
        second = GetParam();
        calls.clear();
        Platform::SystemControl::Details::setImplementationSingleton(std::make_unique<RecordingControl>());
    }
    ~SystemControlFacadeTest() override { Platform::SystemControl::Details::setImplementationSingleton(nullptr); }

    // Calls the operation of the facade with the samples, and expects the same call, and its answer.
    template <class Result, class... Parameters>
    static void expectHandedOn(const char* name, Result (*operation)(Parameters...)) {
        calls.clear();
        if constexpr (std::is_void<Result>::value) {
            operation(sample<std::decay_t<Parameters>>()...);
        } else {
            EXPECT_EQ(operation(sample<std::decay_t<Parameters>>()...), sample<Result>()) << name;
        }
        EXPECT_THAT(calls, ElementsAre(callOf(name, std::make_tuple(sample<std::decay_t<Parameters>>()...))));
    }
};

TEST_P(SystemControlFacadeTest, HandsEachCallToTheOperationOfItsNameAndGivesItsAnswer) {
#define HANDED_ON(RESULT, NAME, PARAMETERS, ARGUMENTS)                                                                 \
    expectHandedOn(#NAME, static_cast<RESULT(*) PARAMETERS>(&ISystemControl::NAME));
    FOR_EACH_OPERATION(HANDED_ON)
#undef HANDED_ON
}

INSTANTIATE_TEST_SUITE_P(BothSamples, SystemControlFacadeTest, testing::Bool());

TEST(SystemControlSlots, StandInTheirOrder) {
    std::vector<std::size_t> slots;
#define TAKE_SLOT(RESULT, NAME, PARAMETERS, ARGUMENTS)                                                                 \
    slots.push_back(slotOf(static_cast<RESULT(ISystemControlImpl::*) PARAMETERS>(&ISystemControlImpl::m_##NAME)));
    FOR_EACH_OPERATION(TAKE_SLOT)
#undef TAKE_SLOT
    EXPECT_EQ(slots, slotsBehindTheDestructor(68));
}

#undef FOR_EACH_OPERATION

TEST(SystemControlSingleton, IsTheDevicesOwnAtFirstAndAgainWithoutAnother) {
    EXPECT_TRUE(ISystemControl::isPremiumModel());
    Platform::SystemControl::Details::setImplementationSingleton(std::make_unique<RecordingControl>());
    calls.clear();
    ISystemControl::isPremiumModel();
    EXPECT_THAT(calls, ElementsAre("isPremiumModel"));
    Platform::SystemControl::Details::setImplementationSingleton(nullptr);
    EXPECT_FALSE(ISystemControl::isAccountSiginMandatory());
    EXPECT_THAT(calls, ElementsAre("isPremiumModel"));
}

} // namespace
} // namespace DAX::Tests
