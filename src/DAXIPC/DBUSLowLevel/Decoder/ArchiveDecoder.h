#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "DAXIPC/DBUSLowLevel/Decoder/MethodDescription.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// A value that was found in an archive. `offset` and `length` tell its bytes, class tokens included.
struct DecodedValue {
    std::string name; // of the field; empty for an element of a list
    const TypeDescription* type = nullptr;
    std::size_t offset = 0;
    std::size_t length = 0;
    // Nothing for a list, a record and an optional, which have what is in them as children. Bytes are a string; a point
    // in time is one as well, as in "2024-02-29T23:59:58" or "not-a-date-time".
    std::variant<std::monostate, bool, std::int64_t, double, std::string> value;
    std::vector<DecodedValue> children;
    std::size_t omitted = 0; // how many elements or bytes of it are not kept here
};

// Where an archive cannot be read on.
struct Breakage {
    std::size_t offset;
    std::string field;  // as in "searchResult.upgrade.version"; empty in the header
    std::string reason; // a sentence for people, without a full stop
};

// What an archive holds.
struct DecodedArchive {
    std::vector<DecodedValue> values; // when it is broken, what came before that
    std::optional<Breakage> breakage;
    std::size_t end = 0; // behind the last byte that was read
};

// How much of an archive is kept, so that a message cannot take much more memory than its own size. Longer ones are
// read to their end all the same.
struct DecodingLimits {
    std::size_t elements = 1000;                 // of all lists together
    std::size_t bytes = std::size_t{256} * 1024; // of all texts and byte arrays together
};

// Reads an archive as the system's own ends do: it is broken here exactly when they refuse it. Any bytes may come.
// Throws nothing but std::bad_alloc. An archive that does not exist is empty, whatever the bytes are: nobody reads
// them.
DecodedArchive decodeArchive(const ArchiveDescription& description, std::string_view bytes,
                             const DecodingLimits& limits = DecodingLimits());

// Whether something is left behind the last value that is more than the line end of a finished archive. Nobody reads
// it.
bool hasUnreadBytes(const DecodedArchive& archive, std::string_view bytes);

} // namespace DAX::DAXIPC::DBUSLowLevel
