#include "Utility/Utils/RethrowExceptionStream.h"

#include <cstdlib>
#include <utility>

#include <boost/exception/get_error_info.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::Utils {
namespace {

void describeAsFarAsPossible(const std::function<void(std::ostream&)>& describe, std::ostream& text) {
    try {
        describe(text);
    } catch (...) { // the exception that is rethrown matters more
    }
}

} // namespace

RethrowExceptionStream::RethrowExceptionStream(boost::exception_ptr exception) : m_exception(std::move(exception)) {}

RethrowExceptionStream::~RethrowExceptionStream() noexcept(false) {
    if (std::uncaught_exceptions() > m_exceptionsOutside) {
        return; // a second exception would end the process
    }
    try {
        rethrowHeld();
    } catch (boost::exception& exception) {
        if (const std::string* const older = boost::get_error_info<errinfo_rethrows>(exception)) {
            m_stream << '\n' << *older;
        }
        exception << errinfo_rethrows(m_stream.str());
        throw;
    } catch (const boost::thread_interrupted&) {
        DAX_THROW(thread_interrupted(), errinfo_rethrows(m_stream.str()));
    } catch (...) {
        DAX_LOG(INF) << "Rethrowing unknown exception: " << m_stream.str();
        throw;
    }
}

void RethrowExceptionStream::rethrowHeld() const {
    if (m_exception) {
        boost::rethrow_exception(m_exception);
    }
    throw;
}

void rethrowWithText(const std::function<void(std::ostream&)>& describe) {
    {
        RethrowExceptionStream stream;
        describeAsFarAsPossible(describe, stream.getStream());
    }
    std::abort(); // never reached: the stream has rethrown
}

void rethrowWithText(const boost::exception_ptr& exception, const std::function<void(std::ostream&)>& describe) {
    {
        RethrowExceptionStream stream(exception);
        describeAsFarAsPossible(describe, stream.getStream());
    }
    std::abort(); // never reached: the stream has rethrown
}

} // namespace DAX::Common::Utils
