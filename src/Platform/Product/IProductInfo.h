#pragma once

#include <cstdint>
#include <string>

#include <boost/filesystem/path.hpp>

namespace DAX::Platform {

// What this device is, and the small states that it keeps in files. Nothing is cached: every call asks the platform, or
// looks at the file, afresh. Any thread may ask. Operations without a word on failure cannot fail, or, where they look
// at files, throw boost::filesystem::filesystem_error when that cannot be done.
class IProductInfo {
public:
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

    // Says in the log for which board the program was built.
    static void initializeProduct();

    // Models that this program was not built for: false.
    static bool isRovetaModel();
    static bool isWOCModel();

    // Kinds of models; false when the platform does not tell.
    static bool isStretchedModel();
    static bool isPictorModel();
    static bool isQuorinModel();
    static bool isSBOX();
    static bool IsPowerBatteryFrameworkSupported();

    // In bytes.
    static int getDAXBigTempStorageMaxSize();
    static int getDAXSmallTempStorageMaxSize();

    // Whether the installation lock file exists; and removes it.
    static bool isInstallationLocked();
    static void releaseInstallationLock();

    // A flag file: the source partitions did not match the last differential upgrade. What cannot be written throws as
    // FileSink does.
    static bool isSourcePartitionNotGenuine();
    static void setSourcePartitionNotGenuineFlag();
    static void releaseSourcePartitionNotGenuineFlag();

    // The version of the system from its release file. GenericException when it is not there.
    static std::string getKovanVersionString();

    // Its first two numbers, as far as there are any; false when one is missing. Throws what std::stoi throws for a
    // part that is no number, and as getKovanVersionString.
    static bool getKovanVersion(std::uint16_t& major, std::uint16_t& minor);

    // The software's version is told as MODEL-VERSION, with the last dash between the two. All throw
    // SystemInfoAPIInternalProblemException when the platform does not tell it, GenericException when it has no dash;
    // all but the first throw boost::bad_lexical_cast when the version has no numbers. Those keep their low 16 bits.
    static std::string getVersionString();
    static int getMainSoftwareVersionMajor();
    static int getMainSoftwareVersionMinor();
    static std::string getModelString();

    // As the platform tells it; SystemInfoAPIInternalProblemException when it does not.
    static std::string getMainSoftwareVersionDate();
    static boost::filesystem::path getPartitionTxtFilePath();
    static std::string getSubmicomVersion();
    static std::string getPlatformType();
    static std::string getChipsetType();
    static std::string getLocalset();
    static std::string getModelLine();
    static bool isEnterpriseModel();
    static bool isIWBSuppoted();

    // UNKNOWN_PRODUCT_TYPE for a number that has no type; throws as those above.
    static EProductType getProductType();

    // A large display without an interactive board; false when the platform does not tell.
    static bool isTBMModel();

    // SystemInfoAPIInternalProblemException for a type that has no text.
    static std::string productTypeToString(EProductType type);
};

} // namespace DAX::Platform
