#pragma once

#include <string>
#include <vector>

#include "Common/Logging/Logging.h"

namespace DAX::Tests {

// A sink for LoggingClass::print, which passes no context: `calls` holds its calls since it was last cleared.
struct RecordingSink {
    struct Call {
        std::string tag;
        Common::Logging::LoggingClass::Level level;
        std::string text;
    };

    static inline std::vector<Call> calls;

    static void sink(const char* tag, Common::Logging::LoggingClass::Level level, char* text) {
        calls.push_back({tag, level, text});
    }

    static std::vector<std::string> texts() {
        std::vector<std::string> found;
        for (const Call& call : calls) {
            found.push_back(call.text);
        }
        return found;
    }
};

} // namespace DAX::Tests
