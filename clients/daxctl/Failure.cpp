#include "daxctl/Failure.h"

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/get_error_info.hpp>
#include <nlohmann/json.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"
#include "Utility/Utils/ErrorTags.h"
#include "Utility/Utils/InnermostText.h"

namespace daxctl {

namespace {

using namespace DAX::Common::Utils;
using DAX::DAXIPC::DBUSLowLevel::StandardExceptionHandler;
namespace Wrapper = DAX::Common::DBUSWrapper::DBUSWrapperExceptions;

std::string streamedText(const boost::exception& exception) {
    const std::string* text = boost::get_error_info<errinfo_stream_text>(exception);
    return text != nullptr ? *text : std::string();
}

Failure describeTransport(const char* name, const boost::exception& exception) {
    return {name, {}, streamedText(exception), boost::diagnostic_information(exception)};
}

} // namespace

std::string Failure::toString() const {
    std::string shown = name;
    if (!supportCode.empty()) {
        shown += " (support code " + supportCode + ")";
    }
    return shown + ": " + (text.empty() ? diagnostic : text);
}

nlohmann::ordered_json Failure::toJson() const {
    return {{"name", name}, {"supportCode", supportCode}, {"text", text}, {"diagnostic", diagnostic}};
}

Failure describeCurrentException() {
    try {
        throw;
    } catch (const Wrapper::ErrorConnectingToDBUS& exception) {
        return describeTransport("ErrorConnectingToDBUS", exception);
    } catch (const Wrapper::RemoteObjectActivationTimedOut& exception) {
        return describeTransport("RemoteObjectActivationTimedOut", exception);
    } catch (const Wrapper::DBUSWrapperException& exception) {
        return describeTransport("RemoteObjectNotAccessible", exception);
    } catch (boost::exception& exception) {
        const std::string* diagnostic = boost::get_error_info<errinfo_string>(exception);
        Failure failure{StandardExceptionHandler::wireNameOf(exception), get_combined_supportcode(exception), {}, {}};
        failure.diagnostic = diagnostic != nullptr ? *diagnostic : boost::diagnostic_information(exception);
        failure.text = get_innermost_text(failure.diagnostic);
        return failure;
    } catch (const std::exception& exception) {
        return {"Error", {}, exception.what(), exception.what()};
    }
}

} // namespace daxctl
