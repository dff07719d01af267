#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "support/ServiceContract.h"

// An input of the target handle_request: one byte, followed by the parameter archive of the call. The byte's low five
// bits choose the method; numbers beyond the table are names that nothing answers. Its high three bits choose the
// connection that calls: 0 is the rightful one for the method, 1 to 3 are the three connections, rightful or not.
namespace DAX::Fuzz {

struct RequestInput {
    Tests::ServiceMethod method;
    Tests::Caller caller;
    std::string parameters;
};

constexpr std::size_t METHOD_CHOICES = 32;

inline RequestInput readRequestInput(const std::uint8_t* data, std::size_t size) {
    const auto& methods = Tests::serviceMethods();
    const std::size_t choice = data[0];
    const Tests::ServiceMethod method = choice % METHOD_CHOICES < methods.size()
                                            ? methods[choice % METHOD_CHOICES]
                                            : Tests::ServiceMethod{"stopTransaction", Tests::Caller::SESSION};
    const std::size_t connection = choice / METHOD_CHOICES % 4;
    return {method, connection == 0 ? method.caller : static_cast<Tests::Caller>(connection - 1),
            std::string(data + 1, data + size)};
}

// An input in which the rightful connection calls the `index`th method of the table.
inline std::string makeRequestInput(std::size_t index, const std::string& parameters) {
    return std::string(1, static_cast<char>(index)) + parameters;
}

} // namespace DAX::Fuzz
