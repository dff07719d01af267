#include "libdaxclient/Implementation/Translation.h"

#include <array>
#include <new>
#include <sstream>
#include <string_view>
#include <utility>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/serialization/string.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"
#include "Utility/Utils/ErrorTags.h"
#include "Utility/Utils/InnermostText.h"
#include "libdaxclient/Implementation/ServiceProxies.h"

namespace dax::detail {

using namespace DAX::Common::Utils;
using DAX::DAXIPC::DBUSLowLevel::ArchiveInput;
using DAX::DAXIPC::DBUSLowLevel::StandardExceptionHandler;
namespace Wrapper = DAX::Common::DBUSWrapper::DBUSWrapperExceptions;
using Kind = Error::Kind;
using Reason = Unreachable::Reason;

namespace {

const char UNKNOWN_NAME[] = "DAXUnknownException";

Kind kindOf(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, Kind>, 12> KINDS{{
        {"TransactionInvalidatedException", Kind::TRANSACTION_INVALIDATED},
        {"CUpdateFailed", Kind::UPDATE_FAILED},
        {"CUSBReadError", Kind::USB_READ_ERROR},
        {"CNetworkTransferError", Kind::NETWORK_TRANSFER_ERROR},
        {"CUSBImageCorrupted", Kind::USB_IMAGE_CORRUPTED},
        {"CUSBDecryptionError", Kind::USB_DECRYPTION_ERROR},
        {"CImageCorrupted", Kind::IMAGE_CORRUPTED},
        {"CWrongKeys", Kind::WRONG_KEYS},
        {"CImageLacksIntegrity", Kind::IMAGE_LACKS_INTEGRITY},
        {"ExternalLockDenied", Kind::EXTERNAL_LOCK_DENIED},
        {"CWildcardImageNotAllowedException", Kind::WILDCARD_IMAGE_NOT_ALLOWED},
        {"InsufficientRWStorageSpace", Kind::INSUFFICIENT_STORAGE},
    }};
    for (const auto& [wireName, kind] : KINDS) {
        if (wireName == name) {
            return kind;
        }
    }
    return Kind::UNKNOWN;
}

// What a call over the bus ends in, by the bus's name for it.
Reason reasonOf(std::string_view busError) {
    static constexpr std::array<std::pair<std::string_view, Reason>, 6> REASONS{{
        {"org.freedesktop.DBus.Error.Disconnected", Reason::NO_BUS},
        {"org.freedesktop.DBus.Error.Timeout", Reason::TIMED_OUT},
        {"org.freedesktop.DBus.Error.AccessDenied", Reason::NOT_ALLOWED},
        {"org.freedesktop.DBus.Error.AuthFailed", Reason::NOT_ALLOWED},
        {"org.freedesktop.DBus.Error.InteractiveAuthorizationRequired", Reason::NOT_ALLOWED},
        {"org.freedesktop.DBus.Error.LimitsExceeded", Reason::NOT_ALLOWED},
    }};
    for (const auto& [name, reason] : REASONS) {
        if (name == busError) {
            return reason;
        }
    }
    return Reason::NO_SERVICE;
}

// Without a connection the names mean little, but for a bus that does not answer.
Reason reasonOfNoConnection(std::string_view busError) {
    return reasonOf(busError) == Reason::TIMED_OUT ? Reason::TIMED_OUT : Reason::NO_BUS;
}

template <class Tag>
std::string textOf(const boost::exception& exception) {
    const std::string* const text = boost::get_error_info<Tag>(exception);
    return text != nullptr ? *text : std::string();
}

Unreachable unreachable(Reason reason, const boost::exception& exception) {
    return {reason, textOf<DAX::Common::DBUSWrapper::errinfo_bus_error>(exception),
            textOf<errinfo_stream_text>(exception), boost::diagnostic_information(exception)};
}

Error reported(boost::exception& exception) {
    const char* const name = StandardExceptionHandler::wireNameOf(exception);
    const std::string diagnostic = textOf<errinfo_string>(exception);
    return {kindOf(name), name, get_combined_supportcode(exception), get_innermost_text(diagnostic), diagnostic};
}

Error reported(const ForeignException& exception) {
    std::string supportCode;
    std::string diagnostic;
    try {
        std::stringstream stream(exception.archive());
        ArchiveInput archive(stream);
        archive >> supportCode >> diagnostic;
    } catch (const boost::archive::archive_exception&) { // the name is told all the same
        diagnostic = exception.archive();
    }
    return {Kind::UNKNOWN, exception.name().empty() ? UNKNOWN_NAME : exception.name(), supportCode,
            get_innermost_text(diagnostic), diagnostic};
}

Error unreadable(const std::string& diagnostic) {
    return {Kind::UNKNOWN, UNKNOWN_NAME, {}, "The answer of the service cannot be read.", diagnostic};
}

} // namespace

void throwTranslated() {
    try {
        throw;
    } catch (const Failure&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const ForeignException& exception) {
        throw reported(exception);
    } catch (const Wrapper::ErrorConnectingToDBUS& exception) {
        const std::string busError = textOf<DAX::Common::DBUSWrapper::errinfo_bus_error>(exception);
        throw unreachable(reasonOfNoConnection(busError), exception);
    } catch (const Wrapper::RemoteObjectActivationTimedOut& exception) {
        throw unreachable(Reason::NO_SERVICE, exception);
    } catch (const Wrapper::DBUSWrapperException& exception) {
        throw unreachable(reasonOf(textOf<DAX::Common::DBUSWrapper::errinfo_bus_error>(exception)), exception);
    } catch (DAX::UserInterestExceptions::UserInterestException& exception) {
        throw reported(exception);
    } catch (const std::exception& exception) {
        throw unreadable(boost::diagnostic_information(exception));
    }
}

} // namespace dax::detail
