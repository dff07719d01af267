#pragma once

#include <exception>
#include <functional>
#include <ostream>
#include <sstream>

#include <boost/exception_ptr.hpp>
#include <boost/thread/exceptions.hpp>

namespace DAX::Common::Utils {

// What a RethrowExceptionStream makes of a boost::thread_interrupted: it can carry text, and a handler for the Boost
// type still catches it.
class thread_interrupted : public virtual std::exception,
                           public virtual boost::exception,
                           public virtual boost::thread_interrupted {};

// Adds text to an exception on its way up. Make it in a catch block, or for an exception pointer. Its destructor
// rethrows the exception, with the new text before the texts that were added earlier. If gathering the text throws,
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

// Both rethrow an exception, the one being handled or that of a pointer, like a RethrowExceptionStream, with the text
// that `describe` streams. If `describe` throws, its text ends there, and the original exception goes on.
[[noreturn]] void rethrowWithText(const std::function<void(std::ostream&)>& describe);
[[noreturn]] void rethrowWithText(const boost::exception_ptr& exception,
                                  const std::function<void(std::ostream&)>& describe);

} // namespace DAX::Common::Utils
