#pragma once

#include <memory>
#include <sstream>
#include <utility>

#include <boost/assert/source_location.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception_ptr.hpp>
#include <boost/throw_exception.hpp>

#include "Utility/Utils/ErrorTags.h"

namespace DAX::Common::Utils::detail {

// An exception that is being built at a throw site, for the length of one expression. Streamed values become the free
// text of the throw site, tags are attached. Belongs to one thread.
template <class E>
class ErrInfoStream : public E {
public:
    // Shares the tags of `exception`, so a tag attached here shows there, too; the thrown exception has its own copy.
    // The tags are in a virtual base, so they are copied separately from E.
    explicit ErrInfoStream(const E& exception) : E(exception) { static_cast<boost::exception&>(*this) = exception; }

    template <class T>
    ErrInfoStream& operator<<(T&& value) {
        if (!m_stream) {
            m_stream = std::make_unique<std::ostringstream>();
        }
        *m_stream << std::forward<T>(value);
        return *this;
    }

    template <class Tag, class T>
    ErrInfoStream& operator<<(boost::error_info<Tag, T> tag) {
        static_cast<E&>(*this) << tag;
        return *this;
    }

    // A streamed text replaces a text that was attached as a tag.
    [[noreturn]] void throwException() {
        attachText();
        throw boost::exception_detail::clone_impl<E>(static_cast<const E&>(*this));
    }

    // The exception that throwException() would throw, for keeping or for another thread.
    boost::exception_ptr getExceptionPtr() {
        try {
            throwException();
        } catch (...) {
            return boost::current_exception();
        }
    }

private:
    void attachText() {
        if (m_stream) {
            static_cast<E&>(*this) << errinfo_stream_text(m_stream->str());
        }
    }

    std::unique_ptr<std::ostringstream> m_stream;
};

// Turns an exception into an ErrInfoStream over it, whatever its type.
struct ErrInfoStreamFactory {
    template <class E>
    auto operator<<(E&& exception) const {
        using Enabled = std::decay_t<decltype(boost::enable_error_info(exception))>;
        return ErrInfoStream<Enabled>(boost::enable_error_info(exception));
    }
};

template <class E>
ErrInfoStream<E> located(ErrInfoStream<E> stream, const boost::source_location& site) {
    stream << boost::throw_function(site.function_name()) << boost::throw_file(site.file_name())
           << boost::throw_line(static_cast<int>(site.line()));
    return stream;
}

} // namespace DAX::Common::Utils::detail

// The throw site: DAX_THROW(GenericException(), "text " << value << errinfo_path(path)). It adds the location.
#define DAX_EXCEPTION(EXCEPTION) DAX_EXCEPTION_AT(BOOST_CURRENT_LOCATION, EXCEPTION)
#define DAX_THROW(EXCEPTION, STREAMED) DAX_THROW_AT(BOOST_CURRENT_LOCATION, EXCEPTION, STREAMED)

// For a check that several sites share: SITE is the location of the caller, who passes BOOST_CURRENT_LOCATION as a
// boost::source_location.
#define DAX_EXCEPTION_AT(SITE, EXCEPTION)                                                                              \
    (::DAX::Common::Utils::detail::located(::DAX::Common::Utils::detail::ErrInfoStreamFactory() << (EXCEPTION), SITE))
#define DAX_THROW_AT(SITE, EXCEPTION, STREAMED) (DAX_EXCEPTION_AT(SITE, EXCEPTION) << STREAMED).throwException()
