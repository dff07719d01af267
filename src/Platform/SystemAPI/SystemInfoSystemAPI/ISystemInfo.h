#pragma once

#include <memory>
#include <string>

namespace DAX::Platform {

class ISystemInfoImpl;

// The device's identifiers and a few settings of its user. Nothing is cached. Any thread may call, and nothing orders
// those who read and write one setting. An operation whose comment names no failure has none of its own.
class ISystemInfo {
public:
    // How a submodel is asked for: with its first letter replaced by that of the device's update zone, or as it is
    // stored.
    enum ZoneType : int { WITH_OTN_ZONE = 0, AS_STORED = 1 };

    // The device's id, never empty. Throws VConfException when the store fails, GenericException when it holds an empty
    // text.
    static std::string getDuid();

    // The access token, which other programs put into the store at run time; may be empty. Throws VConfException when
    // the store fails.
    static std::string getAtoken();

    // The address of the server that updates come from. Empty when the store fails.
    static std::string getOtnUrl();

    // Throws VConfException when the store fails.
    static bool isTermsConditionsAccepted();

    // Never empty. Failures as for getDuid.
    static std::string getFirmwareVersion();

    // Two letters; empty when the store fails or holds a text of another length.
    static std::string getCountryCode();

    // The platform's facts, by their number. Each throws GenericException, which names the platform's failure.
    static int getSystemInfoInt(int key);
    static bool getSystemInfoBool(int key);

    // As above. An assertion fails when the platform succeeds without a text.
    static std::string getSystemInfoString(int key);

    // The platform's other facts, by their name. Each throws GenericException, which names the platform's failure.
    static bool getSystemInfoCustomBool(const char* key);
    static int getSystemInfoCustomInt(const char* key);

    // As above. Throws std::logic_error when the platform succeeds without a text.
    static std::string getSystemInfoCustomString(const char* key);

    // The submodel that was flashed; the model's own name when none is stored or the store fails. Throws what
    // IProductInfo::getModelString throws.
    static std::string getFlashedSubModelString();

    // A failed write is only logged.
    static void setFlashedSubModelString(const std::string& submodel);

    // The submodel that the user chose; the model's own name when none is stored or the store fails. Throws what
    // IProductInfo::getModelString throws.
    static std::string getSelectedSubModelString(ZoneType zone);

    // The submodel that the user chose, as it is stored. Empty when there is none, and when the store fails.
    static std::string getSelectedSubModelOrEmptyString();

    // Keeps the user's choice. A choice of the model itself is kept as no choice; in an update zone its first letter
    // does not matter. An empty text does nothing but a log line, and a failed write is only logged. Throws what
    // IProductInfo::getModelString throws, and std::out_of_range in an update zone when the model has no name.
    static void setSelectedSubModelString(const std::string& submodel);

    // Whether the user chose a submodel. False when the store fails.
    static bool isAnySubmodelSelected();

    // What setAnySubmodelFlag has kept. False when the store fails.
    static bool isAnySubmodelFound();

    // A failed write is only logged.
    static void setAnySubmodelFlag(bool found);

    // Keeps the running software's version, for a comparison after an upgrade. Throws GenericException when the store
    // fails, and what IProductInfo::getVersionString throws.
    static void saveCurrentVersionString();

    // The version that was kept. Throws GenericException when the store fails.
    static std::string loadCurrentVersionString();

    // Kept until power-off. A failed write is only logged; a failed read gives an empty text.
    static void setMsdFolderPath(const std::string& folder);
    static std::string getMsdFolderPath();
    static void setMsdVersions(const std::string& versions);
    static std::string getMsdVersions();

    // Throws VConfException when the store fails.
    static bool isHighContrastMode();

    // The time that the user wants to have for an action, in seconds: 60, 120, 300 or 600. The default when the user
    // chose none, when the choice is unknown, and when the store fails.
    static int getAccessibilityActCustomTimeout(int defaultSeconds);
};

namespace SystemInfo::Details {

// Puts another implementation in place of the device's own; null brings that back. Any thread may call; calls that are
// under way end on the earlier implementation.
void setImplementationSingleton(std::unique_ptr<ISystemInfoImpl> implementation);
} // namespace SystemInfo::Details

} // namespace DAX::Platform
