#pragma once

#include <memory>
#include <string>

namespace DAX::Platform {

class ISystemInfoImpl;

// The device's identifiers and a few of its user's settings. Nothing is cached; any thread may call, and nothing orders
// those who read and write one setting. Operations without a comment are told with the one above them.
class ISystemInfo {
public:
    // How a submodel is asked for: with the letter of the device's zone put in, or as it is stored.
    enum ZoneType : int { WITH_OTN_ZONE = 0, AS_STORED = 1 };

    // The device's id. VConfException when the store fails, GenericException when it is empty.
    static std::string getDuid();

    // The access token, which is in the store while the device runs. VConfException when the store fails.
    static std::string getAtoken();

    // The server that updates come from; empty when the store fails.
    static std::string getOtnUrl();

    // VConfException when the store fails.
    static bool isTermsConditionsAccepted();

    // As getDuid.
    static std::string getFirmwareVersion();

    // Two letters, or nothing.
    static std::string getCountryCode();

    // The platform's facts, by their number. GenericException with the platform's failure; an assertion fails for a
    // text that is not there.
    static int getSystemInfoInt(int key);
    static bool getSystemInfoBool(int key);
    static std::string getSystemInfoString(int key);

    // The platform's other facts, by their text. As above, but std::logic_error for a text that is not there.
    static bool getSystemInfoCustomBool(const char* key);
    static int getSystemInfoCustomInt(const char* key);
    static std::string getSystemInfoCustomString(const char* key);

    // The submodel on the device; the model's own name when the store has none. What IProductInfo::getModelString
    // throws passes. A failed write is logged.
    static std::string getFlashedSubModelString();
    static void setFlashedSubModelString(const std::string& submodel);

    // The submodel that the user chose. As above; the second gives nothing when the store has none.
    static std::string getSelectedSubModelString(ZoneType zone);
    static std::string getSelectedSubModelOrEmptyString();

    // Keeps nothing for the model itself, with its own letter or with the zone's, and does nothing with an empty text.
    // A failed write is logged. What IProductInfo::getModelString throws passes, and std::out_of_range for a device in
    // a zone whose model has no name.
    static void setSelectedSubModelString(const std::string& submodel);

    // Whether the user chose one, and whether there is any; false when the store fails. A failed write is logged.
    static bool isAnySubmodelSelected();
    static bool isAnySubmodelFound();
    static void setAnySubmodelFlag(bool found);

    // Keeps the software's version over an upgrade. GenericException when the store fails; what
    // IProductInfo::getVersionString throws passes.
    static void saveCurrentVersionString();
    static std::string loadCurrentVersionString();

    // Until power-off; empty when the store fails. A failed write is logged.
    static void setMsdFolderPath(const std::string& folder);
    static std::string getMsdFolderPath();
    static void setMsdVersions(const std::string& versions);
    static std::string getMsdVersions();

    // VConfException when the store fails.
    static bool isHighContrastMode();

    // In seconds; the default unless the user chose another time.
    static int getAccessibilityActCustomTimeout(int defaultSeconds);
};

namespace SystemInfo::Details {

// Puts another implementation in place of the device's own; null brings that back.
void setImplementationSingleton(std::unique_ptr<ISystemInfoImpl> implementation);

} // namespace SystemInfo::Details

} // namespace DAX::Platform
