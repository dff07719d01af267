#pragma once

#include <string>

namespace DAX::Common::Utils {

// What an object is called in messages: its class, and in parentheses what tells it from others.
class IDebugName {
public:
    virtual ~IDebugName() = default;

    virtual std::string debugName() const = 0;
};

} // namespace DAX::Common::Utils
