#include "daxctl/InstallationLock.h"

#include <cerrno>
#include <cstring>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/time_formatters.hpp>
#include <boost/exception/exception.hpp>
#include <boost/filesystem/operations.hpp>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "Platform/Product/IProductInfo.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "ServiceInterface/InstallationState.h"

namespace daxctl {

namespace {

using Record = InstallationLock::Record;
using boost::filesystem::path;

void setUnreadable(InstallationLock& lock, const std::string& reason) {
    lock.record = Record::UNREADABLE;
    lock.reason = reason;
}

// The file was there a moment ago.
void readRecord(InstallationLock& lock, const path& file) {
    if (!is_regular_file(file)) { // which could keep the reader waiting
        setUnreadable(lock, "it is no regular file");
        return;
    }
    lock.size = file_size(file);
    if (::access(file.c_str(), R_OK) != 0) {
        setUnreadable(lock, errno == EACCES ? "it may not be read by this user" : std::strerror(errno));
        return;
    }
    try {
        const auto text = DAX::Service::ServiceCommon::loadInstallationState(file.string());
        lock.record = text ? Record::VERIFIED : Record::TORN;
        lock.installing = text.value_or("");
    } catch (const boost::exception&) {
        setUnreadable(lock, "it cannot be read");
    }
}

const char* nameOf(Record record) {
    switch (record) {
    case Record::VERIFIED:
        return "verified";
    case Record::TORN:
        return "torn";
    case Record::UNREADABLE:
        break;
    }
    return "unreadable";
}

} // namespace

SeenInstallationLock seeInstallationLock() {
    try {
        return {DAX::Platform::IProductInfo::isInstallationLocked(), {}};
    } catch (const boost::filesystem::filesystem_error& error) {
        return {boost::none, error.code() == boost::system::errc::permission_denied
                                 ? "unknown, may not be read by this user"
                                 : "unknown: " + error.code().message()};
    }
}

InstallationLock lookAtInstallationLock() {
    const path file = DAX::Platform::IProductPaths::getInstallationLockPath();
    InstallationLock lock;
    lock.file = file.string();
    const SeenInstallationLock seen = seeInstallationLock();
    lock.inForce = seen.isInForce;
    lock.unknown = seen.unknown;
    if (!lock.inForce.value_or(false)) {
        return lock;
    }
    try {
        lock.since = last_write_time(file);
        readRecord(lock, file);
    } catch (const boost::filesystem::filesystem_error& error) {
        if (error.code() != boost::system::errc::no_such_file_or_directory) {
            throw;
        }
        lock.inForce = false;
    }
    return lock;
}

nlohmann::ordered_json InstallationLock::toJson() const {
    nlohmann::ordered_json json = {
        {"installationLock", inForce ? nlohmann::ordered_json(*inForce) : nlohmann::ordered_json()}, {"file", file}};
    if (inForce.value_or(false)) {
        json["since"] = inUtc(since);
        json["record"] = nameOf(record);
        json["installing"] = record == Record::VERIFIED ? nlohmann::ordered_json(installing) : nlohmann::ordered_json();
        json["size"] = size;
    }
    return json;
}

std::string inUtc(std::time_t moment) {
    return boost::posix_time::to_iso_extended_string(boost::posix_time::from_time_t(moment)) + "Z";
}

} // namespace daxctl
