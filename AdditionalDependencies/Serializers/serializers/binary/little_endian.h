#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <boost/exception/info.hpp>
#include <boost/throw_exception.hpp>

#include "serializers/exceptions.h"

namespace serializers::binary {

namespace detail {

struct tag_cant_store_type_in_this_number_of_bytes {}; // the number of bytes, in the type of the value

} // namespace detail

// Formats an unsigned value in exactly N bytes, the low byte first, on every machine.
template <std::size_t N>
struct little_endian {
    using Bytes = std::array<std::uint8_t, N>;

    // Throws lossy_conversion when the value does not fit.
    template <class T>
    static Bytes format(T value) {
        static_assert(std::is_unsigned<T>::value, "only unsigned values are stored");
        Bytes bytes;
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(value & 0xffU);
            value = shifted(value);
        }
        if (value != 0) {
            throwLossyConversion<T>();
        }
        return bytes;
    }

    // Throws lossy_conversion when the bytes hold more than a T can hold.
    template <class T>
    static T parse(const Bytes& bytes) {
        static_assert(std::is_unsigned<T>::value, "only unsigned values are stored");
        T value = 0;
        for (std::size_t index = 0; index < N; ++index) {
            if (index < sizeof(T)) {
                value = static_cast<T>(value | static_cast<T>(static_cast<T>(bytes[index]) << (8 * index)));
            } else if (bytes[index] != 0) {
                throwLossyConversion<T>();
            }
        }
        return value;
    }

private:
    // In two steps: to shift a value of one byte by its whole width would be undefined.
    template <class T>
    static T shifted(T value) {
        return static_cast<T>(static_cast<T>(value >> 4) >> 4);
    }

    template <class T>
    [[noreturn]] static void throwLossyConversion() {
        using bytes_info = boost::error_info<detail::tag_cant_store_type_in_this_number_of_bytes, T>;
        BOOST_THROW_EXCEPTION(lossy_conversion() << bytes_info(static_cast<T>(N)));
    }
};

} // namespace serializers::binary
