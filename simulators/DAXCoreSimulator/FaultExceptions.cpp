#include "DAXCoreSimulator/FaultExceptions.h"

#include <cstdlib>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/NamedExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAXCoreSimulator {

namespace {

using DAX::DAXIPC::DBUSLowLevel::NAMED_EXCEPTIONS;
using DAX::DAXIPC::DBUSLowLevel::NamedException;

template <class Exception>
[[noreturn]] void raise(const std::string& supportCode, const std::string& text) {
    Exception exception;
    if (!supportCode.empty()) {
        exception << DAX::Common::Utils::errinfo_supportcode(supportCode);
    }
    DAX_THROW(exception, text);
}

template <class Exception>
void raiseIfNamed(NamedException<Exception> named, const std::string& name, const std::string& supportCode,
                  const std::string& text) {
    if (name == named.wireName) {
        raise<Exception>(supportCode, text);
    }
}

} // namespace

bool isExceptionName(const std::string& name) {
    return std::apply([&](auto... named) { return ((name == named.wireName) || ...); }, NAMED_EXCEPTIONS);
}

void raiseException(const std::string& name, const std::string& supportCode, const std::string& text) {
    std::apply([&](auto... named) { (raiseIfNamed(named, name, supportCode, text), ...); }, NAMED_EXCEPTIONS);
    std::abort(); // the scenario has been checked for its names
}

} // namespace DAXCoreSimulator
