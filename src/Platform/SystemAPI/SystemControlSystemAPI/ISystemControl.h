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
// thread may call; a check and the change behind it are not one step. What reads or writes the debug parameters throws
// GenericException before they are loaded. Operations without a comment are told with the one above them.
class ISystemControl {
public:
    // Which build this is, for the log.
    static const char* DAXRevisionDescription();

    // Powers the device off, as far as its power state may be changed now. PowerAPIException when it refuses. A custom
    // debug parameter, "CSystemControl::delayedShutdown", holds the calling thread for so many seconds first.
    static void shutdown();

    // The same without regard to locks on the power state.
    static void forceShutdown();

    // Restarts the device, with a cold start. Does nothing with the debug parameter noRebootFlag; otherwise the delay
    // is that of shutdown(). PowerAPIException when the device refuses, GenericException when the cold start cannot be
    // asked for.
    static void reboot();

    // The same; the device is told that it is for a factory reset.
    static void rebootWithFactoryResetReason();

    // Has the next shutdown be a cold one, in the name of this stack or of another program. GenericException, with the
    // failure nested in it.
    static void setColdShutdown();
    static void setColdShutdown(const std::string& name);

    // The code of what woke the device up, 0 or greater. PowerAPIException when the device fails. The setter returns
    // the device's own result.
    static int setWakeUpReason(int reason);
    static int getWakeUpReason();

    // Whether that is this stack.
    static bool isWakeUpReasonDAX();

    // Never.
    static bool isWakeUpReasonStandbyScan();

    // Whether that is a mobile device over Bluetooth.
    static bool isWakeUpReasonMobileBT();

    // Standalone mode begins at the start that follows a request, and the boot scripts say that it is there.
    // boost::filesystem::filesystem_error when a file cannot be looked at.
    static bool isInStandaloneMode();

    // Outlives restarts. GenericException when the request cannot be stored.
    static void requestStandaloneMode();
    static bool wasStandaloneModeRequested();

    // Takes the request back; boost::filesystem::filesystem_error when that fails.
    static void quitStandaloneMode();

    // Whether a flag file on a USB device asks for an upgrade in the factory; false when that cannot be found out. As
    // for every listing of USB devices, UsbDeviceInitializer must exist, here and below, or an assertion fails.
    static bool isFactoryUpgradeEnabled();

    // Whether such a file asks for one upgrade after another, and the directory where its device is mounted; empty when
    // it does not, or when that cannot be found out.
    static bool isSequentialUpgradeEnabled();
    static boost::filesystem::path getSequentialUpgradeDeviceMntPath();

    // Whether the last upgrade succeeded, if one ended and the answer was not removed. It is kept in the working
    // directory of the process and outlives restarts; an answer cannot be set over another. GenericException for that,
    // for two answers at once, and when an answer cannot be written or removed.
    static void setUpgradeStatusFlag(bool success);

    // Does nothing.
    static void setUpgradeVersion(const std::string& version);

    // Removes the answer, or gives it; see setUpgradeStatusFlag.
    static void removeUpgradeStatusFlag();
    static boost::optional<bool> getUpgradeStatusFlag();

    // PowerAPIException when the device tells none.
    static DAXCommon::PowerMode getCurrentPowerMode();

    // Asks for normal, standby or suspend mode, with `flag` at once; what the device says to it is not looked at.
    // PowerAPIException for another mode.
    static void setCurrentPowerMode(DAXCommon::PowerMode mode, bool flag);

    // Whether the device updates by itself; false when the user's option cannot be read.
    static bool isAutoUpdateOptionActive();

    // For the user interface, until power-off. GenericException when the store fails.
    static void setAutoUpdateStatus(DAXAutoUpdateKey::AUTOUPDATE_STATUS status);
    static void setOOBEAcceptedUpdateInfoDataId(const std::string& id);
    static void setUSBUIUpdateStatus(const std::string& status);
    static void setUSBUIUpdateProgress(int progress);
    static void setAutoUpdateSpecialMode(DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE mode);

    // Whether one important update may come in the background. A failed write is logged.
    static void setIsBgOTNImportantUpdateEnabled(bool enabled);

    // GenericException when the store fails or holds no such value.
    static DAXAutoUpdateKey::AUTOUPDATE_STATUS getAutoUpdateStatus();

    // The first value when the store fails; GenericException when it holds no such value.
    static DAXAutoUpdateKey::AUTOUPDATE_SPECIAL_MODE getAutoUpdateSpecialMode();

    // Empty when the store fails.
    static std::string getOOBEAcceptedUpdateInfoDataId();

    // False when the store fails.
    static bool getIsBgOTNImportantUpdateEnabled();

    // Whether the device was made for businesses; false when that cannot be read.
    static bool isB2BTv();

    // GenericException when that cannot be read.
    static bool isChineseMainlandModel();

    // Whether updates may use the cellular network; false when the setting cannot be read.
    static bool isCellularConnectionAllowed();

    // Whether an upgrade succeeded since the last factory reset, or the debug parameters say so; false when either
    // cannot be read.
    static bool wasAnySuccessfulUpgrade();

    // A failed write is logged.
    static void registerSuccessfulUpgrade();

    // GenericException when the store fails or holds no such value.
    static ExternalAppVerificationResult getExternalAppVerificationResult();
    static void setExternalAppVerificationResult(ExternalAppVerificationResult result);

    // The client whose external application waits for its verification; none when the store fails. The setter clears it
    // with none; GenericException when the store fails, and for an empty id.
    static boost::optional<std::string> getPendingExternalAppClientID();
    static void setPendingExternalAppClientID(boost::optional<std::string> id);

    // Flag files that outlive restarts. Their failures are those of FileSink and boost::filesystem.
    static void setDAXFinalizingUpgradeFlag(bool set);
    static void setDAXResetFlag(bool set);
    static bool getDAXResetFlag();

    // Whether the update application holds the device alone. A failed write is logged.
    static void setMonopolyFlag(bool on);

    // Whether the factory menu lets updates come over the network, or over the air.
    static bool isOTNEnabled();
    static bool isOTAEnabled();

    // Marks the partitions as modified, in each of two places that can be written; GenericException when none can.
    // boost::filesystem::filesystem_error when a marker cannot be looked at or removed.
    static void setModifiedPartitionsMarker(const std::string& unused);
    static bool isModifiedPartitionsMarkerSet();
    static void removeModifiedPartitionsMarker();

    // Whether standalone mode may update over the network; false when the setting cannot be read.
    static bool isStandaloneOTNEnabled();

    // How the system schedules this process; whether it did as asked.
    static bool setProcessPriority(ProcessPriority priority);

    // Every board but one is a premium model's.
    static bool isPremiumModel();

    // Never.
    static bool isAccountSiginMandatory();

    // A custom debug parameter, "CSystemControl::notiDetailsType"; 0 without it.
    static int getDetailsNotificationType();

    // Whether updates by itself are no option on this device.
    static bool isAutoUpdateAlwaysOn();

    // Whether the user was asked before, and whether the next update needs a yes; true for the latter when the store
    // fails. A failed write is logged.
    static bool isPreUpdateConsentSet();
    static bool isPreUpdateConsentRequired();
    static void setPreUpdateConsentRequired(bool required);

    // False when the setting cannot be read.
    static bool isMaintenanceMode();
    static bool isRetailMode();

    // The settings key that wakes the automatic upgrade by its change, and that change; whether it was made.
    static std::string getAutoUpgradeTriggerKey();
    static bool setAutoUpgradeTrigger();

    // The whole text of a file of the device; GenericException when it is not there or cannot be read.
    static std::string getWocOTNModelPrefix();
};

namespace SystemControl::Details {

// Puts another implementation in place of the device's own.
void setImplementationSingleton(std::unique_ptr<ISystemControlImpl> implementation);

} // namespace SystemControl::Details

} // namespace DAX::Platform
