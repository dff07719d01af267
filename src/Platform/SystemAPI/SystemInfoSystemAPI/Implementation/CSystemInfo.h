#pragma once

#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfoImpl.h"

namespace DAX::Platform {

// The device's own information. It keeps nothing in memory.
class CSystemInfo : public ISystemInfoImpl {
public:
    std::string m_getDuid() override;
    std::string m_getAtoken() override;
    std::string m_getOtnUrl() override;
    bool m_isTermsConditionsAccepted() override;
    std::string m_getFirmwareVersion() override;
    std::string m_getCountryCode() override;
    int m_getSystemInfoInt(int key) override;
    bool m_getSystemInfoBool(int key) override;
    std::string m_getSystemInfoString(int key) override;
    bool m_getSystemInfoCustomBool(const char* key) override;
    int m_getSystemInfoCustomInt(const char* key) override;
    std::string m_getSystemInfoCustomString(const char* key) override;
    std::string m_getFlashedSubModelString() override;
    void m_setFlashedSubModelString(const std::string& submodel) override;
    std::string m_getSelectedSubModelString(ISystemInfo::ZoneType zone) override;
    std::string m_getSelectedSubModelOrEmptyString() override;
    void m_setSelectedSubModelString(const std::string& submodel) override;
    bool m_isAnySubmodelSelected() override;
    bool m_isAnySubmodelFound() override;
    void m_setAnySubmodelFlag(bool found) override;
    void m_saveCurrentVersionString() override;
    std::string m_loadCurrentVersionString() override;
    void m_setMsdFolderPath(const std::string& folder) override;
    std::string m_getMsdFolderPath() override;
    void m_setMsdVersions(const std::string& versions) override;
    std::string m_getMsdVersions() override;
    bool m_isHighContrastMode() override;
    int m_getAccessibilityActCustomTimeout(int defaultSeconds) override;
};

} // namespace DAX::Platform
