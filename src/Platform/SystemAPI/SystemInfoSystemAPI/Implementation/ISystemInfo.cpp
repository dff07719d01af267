#include "Platform/SystemAPI/SystemInfoSystemAPI/ISystemInfo.h"

#include <utility>

#include "Platform/SystemAPI/SystemInfoSystemAPI/Implementation/CSystemInfo.h"
#include "Utility/Utils/SingletonInstanceHandler.h"

namespace DAX::Platform {
namespace {

Common::Utils::SingletonInstanceHandler<ISystemInfoImpl> singletonHandler([] {
    return std::make_unique<CSystemInfo>();
});

} // namespace

std::string ISystemInfo::getDuid() {
    return singletonHandler->m_getDuid();
}

std::string ISystemInfo::getAtoken() {
    return singletonHandler->m_getAtoken();
}

std::string ISystemInfo::getOtnUrl() {
    return singletonHandler->m_getOtnUrl();
}

bool ISystemInfo::isTermsConditionsAccepted() {
    return singletonHandler->m_isTermsConditionsAccepted();
}

std::string ISystemInfo::getFirmwareVersion() {
    return singletonHandler->m_getFirmwareVersion();
}

std::string ISystemInfo::getCountryCode() {
    return singletonHandler->m_getCountryCode();
}

int ISystemInfo::getSystemInfoInt(int key) {
    return singletonHandler->m_getSystemInfoInt(key);
}

bool ISystemInfo::getSystemInfoBool(int key) {
    return singletonHandler->m_getSystemInfoBool(key);
}

std::string ISystemInfo::getSystemInfoString(int key) {
    return singletonHandler->m_getSystemInfoString(key);
}

bool ISystemInfo::getSystemInfoCustomBool(const char* key) {
    return singletonHandler->m_getSystemInfoCustomBool(key);
}

int ISystemInfo::getSystemInfoCustomInt(const char* key) {
    return singletonHandler->m_getSystemInfoCustomInt(key);
}

std::string ISystemInfo::getSystemInfoCustomString(const char* key) {
    return singletonHandler->m_getSystemInfoCustomString(key);
}

std::string ISystemInfo::getFlashedSubModelString() {
    return singletonHandler->m_getFlashedSubModelString();
}

void ISystemInfo::setFlashedSubModelString(const std::string& submodel) {
    singletonHandler->m_setFlashedSubModelString(submodel);
}

std::string ISystemInfo::getSelectedSubModelString(ZoneType zone) {
    return singletonHandler->m_getSelectedSubModelString(zone);
}

std::string ISystemInfo::getSelectedSubModelOrEmptyString() {
    return singletonHandler->m_getSelectedSubModelOrEmptyString();
}

void ISystemInfo::setSelectedSubModelString(const std::string& submodel) {
    singletonHandler->m_setSelectedSubModelString(submodel);
}

bool ISystemInfo::isAnySubmodelSelected() {
    return singletonHandler->m_isAnySubmodelSelected();
}

bool ISystemInfo::isAnySubmodelFound() {
    return singletonHandler->m_isAnySubmodelFound();
}

void ISystemInfo::setAnySubmodelFlag(bool found) {
    singletonHandler->m_setAnySubmodelFlag(found);
}

void ISystemInfo::saveCurrentVersionString() {
    singletonHandler->m_saveCurrentVersionString();
}

std::string ISystemInfo::loadCurrentVersionString() {
    return singletonHandler->m_loadCurrentVersionString();
}

void ISystemInfo::setMsdFolderPath(const std::string& folder) {
    singletonHandler->m_setMsdFolderPath(folder);
}

std::string ISystemInfo::getMsdFolderPath() {
    return singletonHandler->m_getMsdFolderPath();
}

void ISystemInfo::setMsdVersions(const std::string& versions) {
    singletonHandler->m_setMsdVersions(versions);
}

std::string ISystemInfo::getMsdVersions() {
    return singletonHandler->m_getMsdVersions();
}

bool ISystemInfo::isHighContrastMode() {
    return singletonHandler->m_isHighContrastMode();
}

int ISystemInfo::getAccessibilityActCustomTimeout(int defaultSeconds) {
    return singletonHandler->m_getAccessibilityActCustomTimeout(defaultSeconds);
}

void SystemInfo::Details::setImplementationSingleton(std::unique_ptr<ISystemInfoImpl> implementation) {
    singletonHandler.setImplementationSingleton(std::move(implementation));
}

} // namespace DAX::Platform
