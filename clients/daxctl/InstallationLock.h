#pragma once

#include <cstdint>
#include <ctime>
#include <string>

#include <boost/optional.hpp>
#include <nlohmann/json_fwd.hpp>

namespace daxctl {

// Whether the installation lock is in force.
struct SeenInstallationLock {
    boost::optional<bool> isInForce; // empty when that cannot be seen
    std::string unknown;             // then, for people: "unknown", and why
};
SeenInstallationLock seeInstallationLock();

// What the device's files say of the installation lock. While its file exists, the service refuses everyone; what is in
// the file only tells what was being installed.
struct InstallationLock {
    enum class Record {
        VERIFIED,   // `installing` has the text
        TORN,       // the file was not written to its end, or has changed since
        UNREADABLE, // `reason` says why
    };

    // Empty when it cannot be seen whether the file exists; `unknown` says why then, and `file` alone is known.
    boost::optional<bool> inForce;
    std::string unknown;
    std::string file;

    // Of a lock in force.
    std::time_t since = 0; // when the file was last written
    Record record = Record::VERIFIED;
    std::string installing;
    std::string reason;
    std::uintmax_t size = 0; // in bytes; 0 for what is no regular file

    nlohmann::ordered_json toJson() const;
};

// Looks at the device. A lock that is released meanwhile is not in force. Throws boost::filesystem::filesystem_error
// when the device fails, std::logic_error when it does not tell where the file is.
InstallationLock lookAtInstallationLock();

// A moment as everywhere in the same form: 2026-11-22T09:02:30Z.
std::string inUtc(std::time_t moment);

} // namespace daxctl
