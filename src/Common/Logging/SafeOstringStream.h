#pragma once

#include <cstddef>
#include <ostream>
#include <sstream>

namespace DAX::Common::Logging {

// A string stream that accepts null pointers and writes them as "[nullptr]". One thread at a time.
class SafeOstringStream : private std::ostringstream {
public:
    static const char* const NULLPTR_STR;

    using std::ostringstream::str;

    template <class T>
    SafeOstringStream& operator<<(const T& value) {
        stream() << value;
        return *this;
    }
    SafeOstringStream& operator<<(const char* text) {
        stream() << (text != nullptr ? text : NULLPTR_STR);
        return *this;
    }
    SafeOstringStream& operator<<(char* text) { return *this << static_cast<const char*>(text); }
    SafeOstringStream& operator<<(std::nullptr_t) { return *this << static_cast<const char*>(nullptr); }
    template <class T>
    SafeOstringStream& operator<<(T* pointer) {
        if (pointer == nullptr) {
            return *this << nullptr;
        }
        stream() << pointer;
        return *this;
    }
    SafeOstringStream& operator<<(std::ios_base& (*manipulator)(std::ios_base&)) {
        stream() << manipulator;
        return *this;
    }
    SafeOstringStream& operator<<(std::ostream& (*manipulator)(std::ostream&)) {
        stream() << manipulator;
        return *this;
    }

private:
    std::ostream& stream() { return *this; }
};

} // namespace DAX::Common::Logging
