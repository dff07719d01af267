#pragma once

#include <string>
#include <utility>

#include <boost/exception/get_error_info.hpp>
#include <boost/exception/info.hpp>

#include "Utility/Utils/ErrorTags.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Tests {

// The text that an exception carries under a tag, or a text in angle brackets when there is none.
template <class Info, class E>
std::string textOf(const E& exception) {
    const auto* const text = boost::get_error_info<Info>(exception);
    return text != nullptr ? *text : "<no such text>";
}

// Runs the statement and returns the text of the exception of type E that it throws. Other exceptions pass.
template <class Info, class E = Common::Utils::GenericException, class Statement>
std::string thrownText(const Statement& statement) {
    try {
        statement();
    } catch (const E& exception) {
        return textOf<Info>(exception);
    }
    return "<nothing thrown>";
}

template <class E = Common::Utils::GenericException, class Statement>
std::string thrownDescription(const Statement& statement) {
    return thrownText<Common::Utils::errinfo_description, E>(statement);
}

template <class E = Common::Utils::GenericException, class Statement>
std::string thrownStreamText(const Statement& statement) {
    return thrownText<Common::Utils::errinfo_stream_text, E>(statement);
}

// The description and the error code of the exception of type E that the statement throws.
template <class E = Common::Utils::GenericException, class Statement>
std::pair<std::string, int> thrownFailure(const Statement& statement) {
    try {
        statement();
    } catch (const E& exception) {
        const int* const code = boost::get_error_info<Common::Utils::errinfo_errorcode>(exception);
        const std::string description = textOf<Common::Utils::errinfo_description>(exception);
        return code != nullptr ? std::make_pair(description, *code) : std::make_pair(description + " <no code>", 0);
    }
    return {"<nothing thrown>", 0};
}

// The place where an exception was thrown, according to the exception.
struct ThrowSite {
    std::string function; // the compiler's full signature
    std::string file;     // the full path
    int line = -1;
};

// Runs the statement, which must throw a boost::exception, and returns the place in it.
template <class Statement>
ThrowSite siteThrownBy(const Statement& statement) {
    try {
        statement();
    } catch (const boost::exception& exception) {
        const char* const* const function = boost::get_error_info<boost::throw_function>(exception);
        const char* const* const file = boost::get_error_info<boost::throw_file>(exception);
        const int* const line = boost::get_error_info<boost::throw_line>(exception);
        if (function != nullptr && file != nullptr && line != nullptr) {
            return {*function, *file, *line};
        }
    }
    return {"<nowhere>", "<nowhere>", -1};
}

} // namespace DAX::Tests
