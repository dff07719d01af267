#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"

#include <cstdlib>
#include <tuple>

#include <boost/archive/text_oarchive.hpp>
#include <boost/assert.hpp>
#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveOutput.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/NamedExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::DAXIPC::DBUSLowLevel {

using namespace UserInterestExceptions;

namespace {

template <class ExceptionType>
constexpr const char* wireNameOf() {
    return std::get<NamedException<ExceptionType>>(NAMED_EXCEPTIONS).wireName;
}

} // namespace

// `caught` is what is being handled, or null when that carries no support code.
template <class ExceptionType>
void serializeException(const ExceptionType& exception, boost::exception* caught, std::string& name,
                        std::stringstream& stream) {
    const std::string diagnostic = boost::current_exception_diagnostic_information(true);
    const std::string supportCode =
        caught != nullptr ? Common::Utils::get_combined_supportcode(*caught) : std::string();
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

// Null when the exception is of another type than the table's entry. A cast finds what a catch clause would find, since
// every entry's type has boost::exception for a virtual base.
template <class ExceptionType>
const ExceptionType* as(NamedException<ExceptionType>, const boost::exception& exception) {
    return dynamic_cast<const ExceptionType*>(&exception);
}

// False when what was caught is of another type than the table's entry.
template <class ExceptionType>
bool serializeAs(NamedException<ExceptionType> named, boost::exception& caught, std::string& name,
                 std::stringstream& stream) {
    const ExceptionType* const exception = as(named, caught);
    if (exception == nullptr) {
        return false;
    }
    serializeException(*exception, &caught, name, stream);
    return true;
}

template <class ExceptionType>
void rethrowIfNamed(NamedException<ExceptionType> named, const std::string& method, const std::string& name,
                    std::stringstream& stream) {
    if (name == named.wireName) {
        rethrowException<ExceptionType>(method, stream);
    }
}

} // namespace

void StandardExceptionHandler::wrapException(const boost::exception_ptr& exception, std::string& name,
                                             std::stringstream& stream) {
    try {
        boost::rethrow_exception(exception);
    } catch (boost::exception& caught) {
        const auto serializeByType = [&](auto... named) { return (serializeAs(named, caught, name, stream) || ...); };
        if (!std::apply(serializeByType, NAMED_EXCEPTIONS)) {
            serializeException(DAXUnknownException(), &caught, name, stream);
        }
    } catch (...) {
        serializeException(DAXUnknownException(), nullptr, name, stream);
    }
}

const char* StandardExceptionHandler::wireNameOf(const boost::exception& exception) {
    const char* name = DBUSLowLevel::wireNameOf<DAXUnknownException>();
    const auto isOf = [&](auto named) {
        const bool is = as(named, exception) != nullptr;
        name = is ? named.wireName : name;
        return is;
    };
    std::apply([&](auto... named) { return (isOf(named) || ...); }, NAMED_EXCEPTIONS);
    return name;
}

void StandardExceptionHandler::unwrapException(const std::string& method, const std::string& name,
                                               std::stringstream& stream) {
    const auto rethrowByName = [&](auto... named) { (rethrowIfNamed(named, method, name, stream), ...); };
    std::apply(rethrowByName, NAMED_EXCEPTIONS);
    BOOST_ASSERT_MSG(false, "Adapter sent exception that is not known by Proxy.");
    std::abort();
}

} // namespace DAX::DAXIPC::DBUSLowLevel
