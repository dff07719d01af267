#include "Platform/SystemAPI/SystemControlSystemAPI/Implementation/UpgradeStatusDirectories.h"

#include <boost/filesystem/operations.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "Utility/Utils/ThrowLogged.h"

namespace DAX::Platform::UpgradeStatusDirectories {
namespace {

using boost::system::error_code;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_string;
using Common::Utils::GenericException;
using Common::Utils::throwLogged;

const char SUCCESS[] = "system_update_success";
const char FAILED[] = "system_update_failed";

// A file of that name is no answer, but remove() takes it away as well.
bool isDirectory(const char* name) {
    error_code failure;
    const boost::filesystem::file_status status = boost::filesystem::status(name, failure);
    return !failure && boost::filesystem::is_directory(status);
}

error_code removeIfThere(const char* name) {
    error_code failure;
    const boost::filesystem::file_status status = boost::filesystem::status(name, failure);
    if (status.type() == boost::filesystem::file_not_found) {
        return {};
    }
    if (!failure) {
        boost::filesystem::remove(name, failure);
    }
    return failure;
}

} // namespace

void set(bool success) {
    if (get()) {
        throwLogged<errinfo_description>(
            GenericException(), "Can't set upgrade status flag when this flag is already set.", BOOST_CURRENT_LOCATION);
    }
    error_code failure;
    boost::filesystem::create_directory(success ? SUCCESS : FAILED, failure);
    if (failure) {
        DAX_LOG(ERR) << "Creating UpgradeStatusFlag directory failed: " << failure.message() << ".";
        DAX_THROW(GenericException(), errinfo_description("Creating UpgradeStatusFlag directory failed.")
                                          << errinfo_string(failure.message()));
    }
}

boost::optional<bool> get() {
    const bool success = isDirectory(SUCCESS);
    const bool failed = isDirectory(FAILED);
    if (success && failed) {
        throwLogged<errinfo_description>(GenericException(), "UpgradeStatusFlag is success and failed at once.",
                                         BOOST_CURRENT_LOCATION);
    }
    return success || failed ? boost::optional<bool>(success) : boost::none;
}

void remove() {
    const error_code success = removeIfThere(SUCCESS);
    const error_code failed = removeIfThere(FAILED); // even when the first one cannot be removed
    if (success || failed) {
        const std::string messages = success.message() + " | " + failed.message();
        DAX_LOG(ERR) << "Removing UpgradeStatusFlag directories failed: " << messages << ".";
        DAX_THROW(GenericException(), errinfo_description("Removing UpgradeStatusFlag directory failed.")
                                          << errinfo_string(messages));
    }
}

} // namespace DAX::Platform::UpgradeStatusDirectories
