#pragma once

#include <string>

#include <boost/exception/info.hpp>
#include <boost/throw_exception.hpp>

#include "serializers/binary/detail/type_name.h"
#include "serializers/exceptions.h"

namespace serializers::binary {

// The typed operations of a serializer. Derived has `bool saving()` and `void serializeData(uint8_t* data, size_t
// size)`. The formatter, such as little_endian<4>, determines how many bytes a value takes, and in which order.
// Exceptions of the formatter and of serializeData pass.
template <class Derived>
class SerializerMixin {
public:
    // Saves the value or loads it, depending on the serializer.
    template <class Formatter, class T>
    void serialize(T& value) {
        if (derived().saving()) {
            store<Formatter>(value);
        } else {
            fetch<Formatter>(value);
        }
    }

    // Saves the value. Throws serialization_exception on a serializer that loads.
    template <class Formatter, class T>
    void save(T value) {
        if (!derived().saving()) {
            static const std::string function = described<Formatter, T>("save");
            fail("Can't save to a loading serializer.", function.c_str(), __LINE__);
        }
        store<Formatter>(value);
    }

    // Loads the value. Throws serialization_exception on a serializer that saves.
    template <class Formatter, class T>
    void load(T& value) {
        if (derived().saving()) {
            static const std::string function = described<Formatter, T>("load");
            fail("Can't load from a saving serializer.", function.c_str(), __LINE__);
        }
        fetch<Formatter>(value);
    }

protected:
    ~SerializerMixin() = default;

private:
    Derived& derived() { return static_cast<Derived&>(*this); }

    template <class Formatter, class T>
    void store(T value) {
        auto bytes = Formatter::format(value);
        derived().serializeData(bytes.data(), bytes.size());
    }

    template <class Formatter, class T>
    void fetch(T& value) {
        typename Formatter::Bytes bytes{};
        derived().serializeData(bytes.data(), bytes.size());
        value = Formatter::template parse<T>(bytes);
    }

    template <class Formatter, class T>
    static std::string described(const char* name) {
        return std::string(name) + "<" + detail::type_name<Formatter>() + ", " + detail::type_name<T>() + ">";
    }

    [[noreturn]] static void fail(const char* description, const char* function, int line) {
        boost::throw_exception(boost::enable_error_info(serialization_exception())
                               << errinfo_description(description) << boost::throw_function(function)
                               << boost::throw_file(__FILE__) << boost::throw_line(line));
    }
};

} // namespace serializers::binary
