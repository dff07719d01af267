#pragma once

#include <string>

namespace DAX::Common::Utils {

// An object with a name for messages: its class, and in parentheses what distinguishes it from others.
class IDebugName {
public:
    virtual ~IDebugName() = default;

    // The name, such as "FileSink(/tmp/file)". Only for messages.
    virtual std::string debugName() const = 0;
};

} // namespace DAX::Common::Utils
