#include "daxctl/Failure.h"

#include <algorithm>
#include <sstream>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/exception_ptr.hpp>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"
#include "Utility/Utils/ErrorTags.h"

namespace daxctl {

namespace {

using namespace DAX::Common::Utils;
namespace Wrapper = DAX::Common::DBUSWrapper::DBUSWrapperExceptions;

std::string streamedText(const boost::exception& exception) {
    const std::string* text = boost::get_error_info<errinfo_stream_text>(exception);
    return text != nullptr ? *text : std::string();
}

std::string wireNameOfCurrentException() {
    std::string name;
    std::stringstream archive;
    DAX::DAXIPC::DBUSLowLevel::StandardExceptionHandler::wrapException(boost::current_exception(), name, archive);
    return name;
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

std::string innermostText(const std::string& diagnostic) {
    std::size_t begin = 0;
    for (const std::string mark : {"tag_errinfo_stream*] = ", "tag_errinfo_description*] = "}) {
        const auto found = diagnostic.rfind(mark);
        if (found != std::string::npos) {
            begin = std::max(begin, found + mark.size());
        }
    }
    return begin == 0 ? std::string() : diagnostic.substr(begin, diagnostic.find('\n', begin) - begin);
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
        Failure failure{wireNameOfCurrentException(), get_combined_supportcode(exception), {}, {}};
        failure.diagnostic = diagnostic != nullptr ? *diagnostic : boost::diagnostic_information(exception);
        failure.text = innermostText(failure.diagnostic);
        return failure;
    } catch (const std::exception& exception) {
        return {"Error", {}, exception.what(), exception.what()};
    }
}

} // namespace daxctl
