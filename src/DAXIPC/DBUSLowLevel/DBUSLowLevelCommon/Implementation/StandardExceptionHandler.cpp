#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"

#include <cstdlib>
#include <tuple>

#include <boost/archive/text_oarchive.hpp>
#include <boost/assert.hpp>
#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveOutput.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using namespace UserInterestExceptions;

namespace {

template <class ExceptionType>
struct Row {
    const char* wireName;
};

// In the order in which an exception is tried against the types.
constexpr std::tuple TABLE{
    Row<TransactionInvalidatedException>{"TransactionInvalidatedException"},
    Row<CUpdateFailed>{"CUpdateFailed"},
    Row<CUSBReadError>{"CUSBReadError"},
    Row<CNetworkTransferError>{"CNetworkTransferError"},
    Row<CUSBImageCorrupted>{"CUSBImageCorrupted"},
    Row<CUSBDecryptionError>{"CUSBDecryptionError"},
    Row<CImageCorrupted>{"CImageCorrupted"},
    Row<CWrongKeys>{"CWrongKeys"},
    Row<CImageLacksIntegrity>{"CImageLacksIntegrity"},
    Row<ExternalLockDenied>{"ExternalLockDenied"},
    Row<CWildcardImageNotAllowedException>{"CWildcardImageNotAllowedException"},
    Row<InsufficientRWStorageSpace>{"InsufficientRWStorageSpace"},
    Row<DAXUnknownException>{"DAXUnknownException"},
};

template <class ExceptionType>
constexpr const char* wireNameOf() {
    return std::get<Row<ExceptionType>>(TABLE).wireName;
}

std::string supportCodeOfCurrentException() {
    try {
        boost::rethrow_exception(boost::current_exception());
    } catch (boost::exception& caught) {
        return Common::Utils::get_combined_supportcode(caught);
    } catch (...) {
        return std::string();
    }
}

} // namespace

template <class ExceptionType>
void serializeException(const ExceptionType& exception, std::string& name, std::stringstream& stream) {
    const std::string diagnostic = boost::current_exception_diagnostic_information(true);
    const std::string supportCode = supportCodeOfCurrentException();
    DAX_LOG(DBG) << "IPC Call: Exception has been caught. SupportCode: " << supportCode
                 << " Diagnostic: " << diagnostic;
    name = wireNameOf<ExceptionType>();
    ArchiveOutput archive(stream);
    archive << supportCode << diagnostic << exception;
}

template <class ExceptionType>
[[noreturn]] void rethrowException(const std::string& method, std::stringstream& stream) {
    ArchiveInput archive(stream);
    std::string supportCode;
    std::string diagnostic;
    archive >> supportCode >> diagnostic;
    const std::string text =
        "Remote method '" + method + "' raised '" + wireNameOf<ExceptionType>() + "' with {\n" + diagnostic + "\n}";
    ExceptionType exception;
    archive >> exception;
    if (!supportCode.empty()) {
        exception << Common::Utils::errinfo_supportcode(supportCode);
    }
    exception << Common::Utils::errinfo_string(text);
    DAX_LOG(DBG) << text;
    DAX_EXCEPTION(exception).throwException();
}

namespace {

// False when `exception` is of another type than the row's.
template <class ExceptionType>
bool serializeAs(Row<ExceptionType>, const boost::exception_ptr& exception, std::string& name,
                 std::stringstream& stream) {
    try {
        boost::rethrow_exception(exception);
    } catch (const ExceptionType& caught) {
        serializeException(caught, name, stream);
        return true;
    } catch (...) {
        return false;
    }
}

void serializeAsUnknown(const boost::exception_ptr& exception, std::string& name, std::stringstream& stream) {
    try {
        boost::rethrow_exception(exception);
    } catch (...) {
        serializeException(DAXUnknownException(), name, stream);
    }
}

template <class ExceptionType>
void rethrowIfNamed(Row<ExceptionType> row, const std::string& method, const std::string& name,
                    std::stringstream& stream) {
    if (name == row.wireName) {
        rethrowException<ExceptionType>(method, stream);
    }
}

} // namespace

void StandardExceptionHandler::wrapException(const boost::exception_ptr& exception, std::string& name,
                                             std::stringstream& stream) {
    const auto serializeByType = [&](auto... rows) { return (serializeAs(rows, exception, name, stream) || ...); };
    if (!std::apply(serializeByType, TABLE)) {
        serializeAsUnknown(exception, name, stream);
    }
}

void StandardExceptionHandler::unwrapException(const std::string& method, const std::string& name,
                                               std::stringstream& stream) {
    const auto rethrowByName = [&](auto... rows) { (rethrowIfNamed(rows, method, name, stream), ...); };
    std::apply(rethrowByName, TABLE);
    BOOST_ASSERT_MSG(false, "Adapter sent exception that is not known by Proxy.");
    std::abort();
}

} // namespace DAX::DAXIPC::DBUSLowLevel
