#pragma once

#include <cstdint>
#include <string>

#include <boost/filesystem/path.hpp>

namespace DAX::Platform {

// What this device is, and two small states that it keeps in files. Nothing is cached: every call asks the platform, or
// looks at the file, afresh. Any thread may ask. An operation whose comment names no failure has none of its own.
class IProductInfo {
public:
    // The numbers are this program's own; the platform has others.
    enum EProductType : int {
        TV = 0,
        MONITOR = 1,
        AV = 2,
        AV_PLAYER = 3,
        AV_RECEIVER = 4,
        PROJECTOR = 5,
        LFD = 6,
        SMD = 7,
        SPK = 8,
        HTV = 9,
        UNKNOWN_PRODUCT_TYPE = 10
    };

    // The board that the program was built for, "emulator" unless the build says otherwise.
    static std::string getBoardType();

    // Writes to the log for which board the program was built.
    static void initializeProduct();

    // Always false: this program is not built for such models.
    static bool isRovetaModel();
    static bool isWOCModel();

    // Whether the panel is a stretched one, 540 lines high. False when the platform cannot tell, which is logged.
    static bool isStretchedModel();

    // Whether the display can show a picture in portrait mode. False when the platform cannot tell, which is logged.
    static bool isPictorModel();

    // Whether the display can be turned. False when the platform cannot tell, which is logged.
    static bool isQuorinModel();

    // Whether the computer of a large display is of the type "SBOX". False when the platform cannot tell, which is
    // logged.
    static bool isSBOX();

    // Whether the device has the framework for battery power. False when the platform cannot tell, which is logged.
    static bool IsPowerBatteryFrameworkSupported();

    // In bytes; the same on every device.
    static int getDAXBigTempStorageMaxSize();
    static int getDAXSmallTempStorageMaxSize();

    // Whether the installation lock file exists; what is in it does not matter. Throws
    // boost::filesystem::filesystem_error when it cannot be looked at.
    static bool isInstallationLocked();

    // Removes the installation lock file, for good when this returns. Only logs a warning when there is none. Throws
    // boost::filesystem::filesystem_error when it cannot be removed, GenericException when its folder cannot be
    // synchronized.
    static void releaseInstallationLock();

    // Whether the flag file exists which says that the source partitions did not match the last differential upgrade.
    // Throws boost::filesystem::filesystem_error when it cannot be looked at.
    static bool isSourcePartitionNotGenuine();

    // Writes that flag file unless it exists. Throws what isSourcePartitionNotGenuine and Common::IO::writeFlagFile
    // throw. On a full disk an unfinished file may stay, which counts as the flag.
    static void setSourcePartitionNotGenuineFlag();

    // Removes that flag file if it exists. Failures as for releaseInstallationLock.
    static void releaseSourcePartitionNotGenuineFlag();

    // The version of the system, from the first line of its release file that has "VERSION" and "=". Throws
    // GenericException when the file or the line is missing, or the version is empty.
    static std::string getKovanVersionString();

    // The first two numbers of that version, each of which must end in a dot: "8.0.1" gives 8 and 0. Without a first
    // dot the result is false, and both are 0; without a second one it is false, `major` is set and `minor` is 0, as
    // for "8.0". Only the low 16 bits of a number are kept. Throws std::invalid_argument for a part that is no number,
    // std::out_of_range for one that does not fit in an int, and what getKovanVersionString throws.
    static bool getKovanVersion(std::uint16_t& major, std::uint16_t& minor);

    // The software's version: what follows the last dash of the platform's text, whatever its form, such as "17.037.0".
    // Throws SystemInfoAPIInternalProblemException when the platform cannot tell, GenericException when the text has no
    // dash.
    static std::string getVersionString();

    // These three read the platform's text as MODEL-MAJOR.MINOR, or MODEL-MAJOR with 0 for the minor number, split at
    // its last dash. Only the low 16 bits of a number are kept: 0 to 65535. Each throws boost::bad_lexical_cast when
    // the version has another form, such as "17.037.0", and otherwise what getVersionString throws.
    static int getMainSoftwareVersionMajor();
    static int getMainSoftwareVersionMinor();
    static std::string getModelString();

    // What the platform tells, unchanged. Each throws SystemInfoAPIInternalProblemException when it cannot tell.
    static std::string getMainSoftwareVersionDate();
    static boost::filesystem::path getPartitionTxtFilePath();
    static std::string getSubmicomVersion();
    static std::string getPlatformType();
    static std::string getChipsetType();
    static std::string getLocalset();

    // The model line; for a model of the Chinese market the line of that market. Failures as above.
    static std::string getModelLine();

    // What the platform tells, unchanged. Failures as above.
    static bool isEnterpriseModel();
    static bool isIWBSuppoted();

    // UNKNOWN_PRODUCT_TYPE for a number of the platform's that is not known here. Failures as above.
    static EProductType getProductType();

    // Whether it is a large display without an interactive board. False when the platform cannot tell.
    static bool isTBMModel();

    // The type as text; three types share "AV". Throws SystemInfoAPIInternalProblemException for UNKNOWN_PRODUCT_TYPE
    // and for any value without a name.
    static std::string productTypeToString(EProductType type);
};

} // namespace DAX::Platform
