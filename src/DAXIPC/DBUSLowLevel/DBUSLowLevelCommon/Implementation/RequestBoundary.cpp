#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/RequestBoundary.h"

#include <boost/exception_ptr.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::DAXIPC::DBUSLowLevel::RequestBoundary {

void throwUnknownMethod(const std::string& method) {
    DAX_THROW(Common::DBUSWrapper::DBUSWrapperExceptions::UnknownMethodException(), "Unknown method: " << method);
}

void replaceByException(std::stringstream& out, std::string& exceptionName) {
    std::stringstream exception;
    StandardExceptionHandler::wrapException(boost::current_exception(), exceptionName, exception);
    out.swap(exception);
}

} // namespace DAX::DAXIPC::DBUSLowLevel::RequestBoundary
