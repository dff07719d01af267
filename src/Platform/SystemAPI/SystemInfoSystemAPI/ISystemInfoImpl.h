#pragma once

#include <string>

#include <boost/core/noncopyable.hpp>

#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfo.h"

namespace DAX::Platform {

// The implementation behind ISystemInfo. Each slot m_NAME does what ISystemInfo::NAME is documented to do. Any thread
// may call.
class ISystemInfoImpl : private boost::noncopyable {
public:
    virtual ~ISystemInfoImpl() = default;

    virtual std::string m_getDuid() = 0;
    virtual std::string m_getAtoken() = 0;
    virtual std::string m_getOtnUrl() = 0;
    virtual bool m_isTermsConditionsAccepted() = 0;
    virtual std::string m_getFirmwareVersion() = 0;
    virtual std::string m_getCountryCode() = 0;
    virtual int m_getSystemInfoInt(int key) = 0;
    virtual bool m_getSystemInfoBool(int key) = 0;
    virtual std::string m_getSystemInfoString(int key) = 0;
    virtual bool m_getSystemInfoCustomBool(const char* key) = 0;
    virtual int m_getSystemInfoCustomInt(const char* key) = 0;
    virtual std::string m_getSystemInfoCustomString(const char* key) = 0;
    virtual std::string m_getFlashedSubModelString() = 0;
    virtual void m_setFlashedSubModelString(const std::string& submodel) = 0;
    virtual std::string m_getSelectedSubModelString(ISystemInfo::ZoneType zone) = 0;
    virtual std::string m_getSelectedSubModelOrEmptyString() = 0;
    virtual void m_setSelectedSubModelString(const std::string& submodel) = 0;
    virtual bool m_isAnySubmodelSelected() = 0;
    virtual bool m_isAnySubmodelFound() = 0;
    virtual void m_setAnySubmodelFlag(bool found) = 0;
    virtual void m_saveCurrentVersionString() = 0;
    virtual std::string m_loadCurrentVersionString() = 0;
    virtual void m_setMsdFolderPath(const std::string& folder) = 0;
    virtual std::string m_getMsdFolderPath() = 0;
    virtual void m_setMsdVersions(const std::string& versions) = 0;
    virtual std::string m_getMsdVersions() = 0;
    virtual bool m_isHighContrastMode() = 0;
    virtual int m_getAccessibilityActCustomTimeout(int defaultSeconds) = 0;
};

} // namespace DAX::Platform
