#pragma once

#include <exception>
#include <functional>
#include <ostream>
#include <sstream>

#include <boost/exception_ptr.hpp>
#include <boost/thread/exceptions.hpp>

namespace DAX::Common::Utils {

// What a boost::thread_interrupted becomes on its way through a RethrowExceptionStream: it can carry text, and a
// handler for the Boost type still catches it.
class thread_interrupted : public virtual std::exception,
                           public virtual boost::exception,
                           public virtual boost::thread_interrupted {};

// Adds text to an exception while it travels. Made in a catch block (or over an exception pointer); its destructor
// rethrows, with the text gathered so far put in front of what earlier ones added. Where gathering the text throws,
// that exception goes on instead.
class RethrowExceptionStream {
public:
    RethrowExceptionStream() = default; // for the exception being handled
    explicit RethrowExceptionStream(boost::exception_ptr exception);
    RethrowExceptionStream(const RethrowExceptionStream&) = delete;
    RethrowExceptionStream& operator=(const RethrowExceptionStream&) = delete;
    ~RethrowExceptionStream() noexcept(false);

    std::ostream& getStream() { return m_stream; }

private:
    void rethrowHeld() const;

    boost::exception_ptr m_exception;
    std::ostringstream m_stream;
    const int m_exceptionsOutside = std::uncaught_exceptions();
};

// Both rethrow an exception, the one being handled or that of a pointer, as a RethrowExceptionStream does, with what
// `describe` streams. A description that throws ends there, and never takes the exception's place.
[[noreturn]] void rethrowWithText(const std::function<void(std::ostream&)>& describe);
[[noreturn]] void rethrowWithText(const boost::exception_ptr& exception,
                                  const std::function<void(std::ostream&)>& describe);

} // namespace DAX::Common::Utils
