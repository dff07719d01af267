#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"

namespace DAX::Platform {
namespace {

// What the setting can hold beside 0, which is no answer yet.
const int CONSENT_NOT_REQUIRED = 1;
const int CONSENT_REQUIRED = 2;

} // namespace

bool CSystemControl::m_isPreUpdateConsentSet() {
    return readOrDefault(VCONF_KEY_PREUPDATE_CONSENT) != 0;
}

bool CSystemControl::m_isPreUpdateConsentRequired() {
    if (m_isAutoUpdateAlwaysOn()) {
        DAX_LOG(INF) << "TBM, B2B or AUDIO device -> force to false";
        return false;
    }
    try {
        return (VConfT<int>(VCONF_KEY_PREUPDATE_CONSENT).get() & ~CONSENT_REQUIRED) == 0;
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Error while getting pre-update consent value"
                     << boost::current_exception_diagnostic_information(true);
        return true;
    }
}

void CSystemControl::m_setPreUpdateConsentRequired(bool required) {
    try {
        VConfT<int>(VCONF_KEY_PREUPDATE_CONSENT).set(required ? CONSENT_REQUIRED : CONSENT_NOT_REQUIRED);
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Error while saving pre-update consent value"
                     << boost::current_exception_diagnostic_information(true);
    }
}

} // namespace DAX::Platform
