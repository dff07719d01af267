#include "daxctl/Failure.h"

#include <array>

#include <boost/exception/diagnostic_information.hpp>
#include <nlohmann/json.hpp>

#include "Utility/Utils/ErrorTags.h"
#include "Utility/Utils/InnermostText.h"
#include "clients_common/Printable.h"
#include "dax/client.h"

namespace daxctl {

namespace {

// The names that scripts know these failures by.
const char* nameOf(const dax::Unreachable& failure) {
    if (failure.busError() == "org.freedesktop.DBus.Error.TimedOut") {
        return "RemoteObjectActivationTimedOut";
    }
    const bool wasConnected = failure.busError() == "org.freedesktop.DBus.Error.Disconnected";
    return failure.reason() == dax::Unreachable::Reason::NO_BUS && !wasConnected ? "ErrorConnectingToDBUS"
                                                                                 : "RemoteObjectNotAccessible";
}

const char* kindOf(const dax::Unreachable& failure) {
    static constexpr std::array<const char*, 4> NAMES{"NO_BUS", "NO_SERVICE", "NOT_ALLOWED", "TIMED_OUT"};
    return NAMES.at(static_cast<std::size_t>(failure.reason()));
}

const char* kindOf(const dax::Error& error) {
    static constexpr std::array<const char*, 13> NAMES{"TRANSACTION_INVALIDATED",
                                                       "UPDATE_FAILED",
                                                       "USB_READ_ERROR",
                                                       "NETWORK_TRANSFER_ERROR",
                                                       "USB_IMAGE_CORRUPTED",
                                                       "USB_DECRYPTION_ERROR",
                                                       "IMAGE_CORRUPTED",
                                                       "WRONG_KEYS",
                                                       "IMAGE_LACKS_INTEGRITY",
                                                       "EXTERNAL_LOCK_DENIED",
                                                       "WILDCARD_IMAGE_NOT_ALLOWED",
                                                       "INSUFFICIENT_STORAGE",
                                                       "UNKNOWN"};
    return NAMES.at(static_cast<std::size_t>(error.kind()));
}

const char NOT_ALLOWED[] = "You may not use the update service: be root or a member of dax";

// The bus's own text counts matched rules. It knows another reason, too: a user has too many connections.
bool isForbidden(const dax::Unreachable& failure) {
    return failure.reason() == dax::Unreachable::Reason::NOT_ALLOWED &&
           failure.busError() != "org.freedesktop.DBus.Error.LimitsExceeded";
}

} // namespace

std::string Failure::toString() const {
    if (isPlain) {
        return clients_common::printable(text);
    }
    std::string shown = name;
    if (!supportCode.empty()) {
        shown += " (support code " + supportCode + ")";
    }
    return clients_common::printable(shown) + ": " +
           (text.empty() ? clients_common::printableLines(diagnostic) : clients_common::printable(text));
}

nlohmann::ordered_json Failure::toJson() const {
    return {{"name", name}, {"supportCode", supportCode}, {"text", text}, {"diagnostic", diagnostic}, {"kind", kind}};
}

Failure describeCurrentException() {
    try {
        throw;
    } catch (const dax::Unreachable& failure) {
        const bool forbidden = isForbidden(failure);
        return {nameOf(failure),      {},        forbidden ? NOT_ALLOWED : failure.text(),
                failure.diagnostic(), forbidden, kindOf(failure)};
    } catch (const dax::Error& error) {
        return {error.name(), error.supportCode(), error.text(), error.diagnostic(), false, kindOf(error)};
    } catch (boost::exception& exception) {
        const std::string diagnostic = boost::diagnostic_information(exception);
        return {"DAXUnknownException", DAX::Common::Utils::get_combined_supportcode(exception),
                DAX::Common::Utils::get_innermost_text(diagnostic), diagnostic};
    } catch (const std::exception& exception) {
        return {"Error", {}, exception.what(), exception.what()};
    }
}

} // namespace daxctl
