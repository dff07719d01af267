#pragma once

#include <string>

#include <boost/assert/source_location.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::Utils {

// Logs the text at level ERR and throws the exception, which carries the same text as a `Text` (errinfo_description or
// errinfo_stream_text). Both name `site`, which the caller gives as BOOST_CURRENT_LOCATION.
template <class Text = errinfo_stream_text, class Exception>
[[noreturn]] void throwLogged(const Exception& exception, const std::string& text, const boost::source_location& site) {
    using Logging::LoggingClass;
    Logging::LoggingStream(Logging::LOG_TAG, LoggingClass::ERR, LoggingClass::shortenPath(site.file_name()),
                           static_cast<int>(site.line()))
            .getStream()
        << text;
    DAX_THROW_AT(site, exception, Text(text));
}

} // namespace DAX::Common::Utils
