#pragma once

#include <memory>
#include <string>

#include <boost/filesystem/path.hpp>
#include <boost/optional.hpp>

#include "DAXCommon/PowerMode.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/AutoUpdate.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ExternalAppVerificationResult.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ProcessPriority.h"

namespace DAX::Platform {

class ISystemControlImpl;

// What the device is asked to do, in what mode it is, and what the update stack keeps about itself over restarts. Any
// thread may call; nothing orders parallel callers, so a check and the change that follows it are not one step.
//
// An operation whose comment names no failure has none of its own. Settings outlive restarts unless the comment says
// otherwise. "Before the debug parameters are loaded" means before DebugAndTestParameters::loadDebugAndTestParameters
// has run in this process, or after a reload() of a file that it could open but not read. On production software this
// never holds: the defaults are always there.
class ISystemControl {
public:
    // Which build this is, for the log. Never null; lives as long as the process.
    static const char* DAXRevisionDescription();

    // Powers the device off, unless a lock holds its power state. Throws PowerAPIException when the device refuses,
    // GenericException before the debug parameters are loaded. The debug parameter "CSystemControl::delayedShutdown",
    // in seconds, makes the calling thread sleep first.
    static void shutdown();

    // As shutdown(), but locks on the power state are ignored.
    static void forceShutdown();

    // Restarts the device with a cold start. Does nothing when the debug parameter noRebootFlag is set. Delay and
    // failures are those of shutdown(); in addition throws GenericException when the cold start cannot be asked for.
    static void reboot();

    // As reboot(); the device is told that the reason is a factory reset.
    static void rebootWithFactoryResetReason();

    // Makes the next shutdown a cold one, in the name of this stack or of the given program. The request lasts until
    // power-off. Throws GenericException, with the cause nested in it.
    static void setColdShutdown();
    static void setColdShutdown(const std::string& name);

    // Stores the code of what wakes the device up. Returns the device's result, 0 or greater. Throws PowerAPIException
    // when the device fails.
    static int setWakeUpReason(int reason);

    // The code of what woke the device up, 0 or greater. Throws PowerAPIException when the device fails.
    static int getWakeUpReason();

    // Whether this stack woke the device up. Failures as for getWakeUpReason.
    static bool isWakeUpReasonDAX();

    // Always false, whatever the reason is.
    static bool isWakeUpReasonStandbyScan();

    // Whether a mobile device woke it up over Bluetooth. Failures as for getWakeUpReason.
    static bool isWakeUpReasonMobileBT();

    // Whether the device is in standalone mode, which the boot scripts tell: it begins with the first start after a
    // request. Throws boost::filesystem::filesystem_error when a file cannot be looked at.
    static bool isInStandaloneMode();

    // Requests standalone mode by a file whose existence is the request; does nothing when it exists. It outlives
    // restarts. Throws GenericException, with the errno value, when the file is not there afterwards. When the disk is
    // full the file may be there without its content, and the request still counts. Throws
    // boost::filesystem::filesystem_error when the file cannot be looked at.
    static void requestStandaloneMode();

    // Whether the request exists. Throws boost::filesystem::filesystem_error when the file cannot be looked at.
    static bool wasStandaloneModeRequested();

    // Takes the request back if there is one. Throws boost::filesystem::filesystem_error when that fails.
    static void quitStandaloneMode();

    // Whether the flag file on a USB device asks for an upgrade in the factory. The first mounted device with such a
    // file decides. False on any failure, which is logged. UsbDeviceInitializer must exist, or an assertion fails.
    static bool isFactoryUpgradeEnabled();

    // Whether the flag file asks for one upgrade after another. Conditions as for isFactoryUpgradeEnabled.
    static bool isSequentialUpgradeEnabled();

    // Where the device with that flag file is mounted; empty when isSequentialUpgradeEnabled() would be false.
    static boost::filesystem::path getSequentialUpgradeDeviceMntPath();

    // Keeps whether the last upgrade succeeded, as a directory in the working directory of the process. Throws
    // GenericException when an answer is already kept, or when it cannot be written.
    static void setUpgradeStatusFlag(bool success);

    // Does nothing.
    static void setUpgradeVersion(const std::string& version);

    // Removes the answer of setUpgradeStatusFlag, if there is one. Throws GenericException when that fails.
    static void removeUpgradeStatusFlag();

    // The answer of setUpgradeStatusFlag; empty when there is none. Throws GenericException when both answers are
    // there.
    static boost::optional<bool> getUpgradeStatusFlag();

    // Throws PowerAPIException when the device tells none of the five modes.
    static DAXCommon::PowerMode getCurrentPowerMode();

    // Asks the device for normal, standby or suspend mode; `flag` is handed to it as it is. Whether the device agrees
    // is not looked at. Throws PowerAPIException for POWER_MODE_POWER_OFF and above. A negative mode is not refused
    // here: it goes to the device.
    static void setCurrentPowerMode(DAXCommon::PowerMode mode, bool flag);

    // Whether the device installs updates on its own: always on some devices (isAutoUpdateAlwaysOn), else as the user
    // chose. False when the user's choice cannot be read.
    static bool isAutoUpdateOptionActive();

    // What the user interface shows; kept until power-off. The values are not checked. Each throws GenericException
    // when the store fails.
    static void setAutoUpdateStatus(DAXAutoUpdateKey::AUTOUPDATE_STATUS status);
    static void setOOBEAcceptedUpdateInfoDataId(const std::string& id);
    static void setUSBUIUpdateStatus(const std::string& status);
    static void setUSBUIUpdateProgress(int progress);
    static void setAutoUpdateSpecialMode(DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE mode);

    // Keeps whether one important update may come in the background. A failed write is only logged.
    static void setIsBgOTNImportantUpdateEnabled(bool enabled);

    // Throws GenericException when the store fails, or holds a value outside of the enumeration.
    static DAXAutoUpdateKey::AUTOUPDATE_STATUS getAutoUpdateStatus();

    // AUTOUPDATE_SPECIAL_MODE_OFF when the store fails. Throws GenericException when it holds a value outside of the
    // enumeration.
    static DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE getAutoUpdateSpecialMode();

    // Empty when none was accepted, and when the store fails.
    static std::string getOOBEAcceptedUpdateInfoDataId();

    // False when the store fails.
    static bool getIsBgOTNImportantUpdateEnabled();

    // Whether the device was made for businesses. False when that cannot be read.
    static bool isB2BTv();

    // Throws GenericException when that cannot be read.
    static bool isChineseMainlandModel();

    // Whether updates may use the cellular network. False when the setting cannot be read.
    static bool isCellularConnectionAllowed();

    // Whether an upgrade has succeeded since the last factory reset, or the debug parameters say so. False when the
    // setting cannot be read, and before the debug parameters are loaded.
    static bool wasAnySuccessfulUpgrade();

    // Keeps that an upgrade has succeeded. A failed write is only logged.
    static void registerSuccessfulUpgrade();

    // Throws GenericException when the store fails, or holds a value outside of the enumeration.
    static ExternalAppVerificationResult getExternalAppVerificationResult();

    // The value is not checked. Throws GenericException when the store fails.
    static void setExternalAppVerificationResult(ExternalAppVerificationResult result);

    // The client whose external application waits for its verification. Empty when there is none, and when the store
    // fails.
    static boost::optional<std::string> getPendingExternalAppClientID();

    // boost::none clears it. Throws GenericException for an empty id, and when the store fails.
    static void setPendingExternalAppClientID(boost::optional<std::string> id);

    // Creates or removes a flag file; does nothing when it is as wanted. Only its existence counts, so when the disk is
    // full an unfinished file may stay, and counts. Each throws what Common::IO::writeFlagFile and removeFlagFile
    // throw, and boost::filesystem::filesystem_error when the file cannot be looked at.
    static void setDAXFinalizingUpgradeFlag(bool set);
    static void setDAXResetFlag(bool set);

    // Throws boost::filesystem::filesystem_error when the file cannot be looked at.
    static bool getDAXResetFlag();

    // Tells other programs whether the update application holds the device alone, until power-off. A failed write is
    // only logged.
    static void setMonopolyFlag(bool on);

    // Whether the factory menu lets updates come over the network, by the switch for businesses or the one for homes
    // (see isB2BTv). Conditions as for IFactorySettings::isRetailTvOtnEnabled.
    static bool isOTNEnabled();

    // Whether updates can come over the air. False when the device cannot tell.
    static bool isOTAEnabled();

    // Marks the partitions as modified, by a file in each of two places; one is enough. The argument is not used.
    // Throws GenericException when neither can be written.
    static void setModifiedPartitionsMarker(const std::string& unused);

    // Whether there is a marker in either place. Throws boost::filesystem::filesystem_error when none is found and a
    // place cannot be looked at.
    static bool isModifiedPartitionsMarkerSet();

    // Removes the marker in both places. A failure does not stop the other removal; the first one is thrown in the end:
    // boost::filesystem::filesystem_error, or GenericException when a folder cannot be synchronized.
    static void removeModifiedPartitionsMarker();

    // Whether standalone mode may update over the network. False when the setting cannot be read.
    static bool isStandaloneOTNEnabled();

    // Sets how readily the system gives the process time. False when the system refuses: coming back to FOREGROUND
    // needs a privilege.
    static bool setProcessPriority(ProcessPriority priority);

    // True on every board but one.
    static bool isPremiumModel();

    // Always false.
    static bool isAccountSiginMandatory();

    // The debug parameter "CSystemControl::notiDetailsType"; 0 without it. Throws GenericException before the debug
    // parameters are loaded.
    static int getDetailsNotificationType();

    // Whether the device always installs updates on its own, whatever its user wants: so do devices for businesses, and
    // large displays without an interactive board.
    static bool isAutoUpdateAlwaysOn();

    // Whether the user has answered the question for consent. False when the setting cannot be read.
    static bool isPreUpdateConsentSet();

    // Whether the next update needs the user's consent: never where isAutoUpdateAlwaysOn(), else until the user has
    // declared that it does not. True when the setting cannot be read.
    static bool isPreUpdateConsentRequired();

    // Keeps the user's answer. A failed write is only logged.
    static void setPreUpdateConsentRequired(bool required);

    // False when the setting cannot be read.
    static bool isMaintenanceMode();
    static bool isRetailMode();

    // The settings key whose every change wakes the automatic upgrade, for those who watch it.
    static std::string getAutoUpgradeTriggerKey();

    // Changes that key's value. False when the store fails, which is logged.
    static bool setAutoUpgradeTrigger();

    // The whole text of a file of the device, with its line ends. Throws GenericException when it does not exist or
    // cannot be read, boost::filesystem::filesystem_error when it cannot be looked at.
    static std::string getWocOTNModelPrefix();
};

namespace SystemControl::Details {

// Puts another implementation in place of the device's own; null brings that back. Any thread may call; calls that are
// under way end on the earlier implementation.
void setImplementationSingleton(std::unique_ptr<ISystemControlImpl> implementation);
} // namespace SystemControl::Details

} // namespace DAX::Platform
