#include <string>

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/CSystemControl.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/SettingAccess.h"
#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Platform {
namespace {

using Common::Utils::errinfo_description;
using Common::Utils::GenericException;

const int LAST_EXTERNAL_APP_VERIFICATION_RESULT = 3;

} // namespace

ExternalAppVerificationResult CSystemControl::m_getExternalAppVerificationResult() {
    DAX_LOG(INF) << "CSystemControl::m_getExternalAppVerificationResult()";
    int value = 0;
    try {
        value = VConfT<int>(EXT_APP_VERIFICATION_RESULT_VCONF_KEY).get();
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot get the value from vconf variable: " << EXT_APP_VERIFICATION_RESULT_VCONF_KEY;
        DAX_THROW(GenericException(), errinfo_description("Cannot get verification result for external application."));
    }
    if (value < 0 || value > LAST_EXTERNAL_APP_VERIFICATION_RESULT) {
        DAX_LOG(ERR) << "Wrong value: " << value << " in vconf variable: " << EXT_APP_VERIFICATION_RESULT_VCONF_KEY;
        DAX_THROW(GenericException(),
                  "Cannot get verification result for external application - invalid value stored in vconf: " << value);
    }
    return static_cast<ExternalAppVerificationResult>(value);
}

void CSystemControl::m_setExternalAppVerificationResult(ExternalAppVerificationResult result) {
    try {
        SettingAccess::setQuoted(EXT_APP_VERIFICATION_RESULT_VCONF_KEY, static_cast<int>(result));
    } catch (const VConfException&) {
        DAX_THROW(GenericException(), errinfo_description("Cannot save verification result for external application."));
    }
}

boost::optional<std::string> CSystemControl::m_getPendingExternalAppClientID() {
    try {
        DAX_LOG(INF) << "CSystemControl::m_getPendingExternalAppClientID()";
        const std::string id = VConfT<std::string>(EXT_APP_CLIENT_ID_VCONF_KEY).get();
        return id.empty() ? boost::none : boost::optional<std::string>(id);
    } catch (...) {
        DAX_LOG(ERR) << "Exception caught while getting pending External App ID from VConf: "
                     << boost::current_exception_diagnostic_information(true);
        return boost::none;
    }
}

void CSystemControl::m_setPendingExternalAppClientID(boost::optional<std::string> id) {
    if (id && id->empty()) {
        DAX_THROW(GenericException(), errinfo_description("Cannot set empty string as client ID."));
    }
    try {
        VConfT<std::string>(EXT_APP_CLIENT_ID_VCONF_KEY).set(id.value_or(""));
    } catch (const VConfException&) {
        DAX_LOG(ERR) << "Cannot set the value: \"" << id.value_or("<null>")
                     << "\" in vconf variable: " << EXT_APP_CLIENT_ID_VCONF_KEY;
        DAX_THROW(GenericException(), errinfo_description("Cannot save client ID for external application."));
    }
}

} // namespace DAX::Platform
