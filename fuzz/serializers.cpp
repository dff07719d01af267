// Tries any value of each unsigned type in each width. A value is stored as plain arithmetic stores it, or refused; any
// bytes are loaded as plain arithmetic reads them, or refused; saving never loads, and loading never saves. Accepted
// values also go to a sink, which is moved between the calls, and are found there one after the other. The input's
// bytes are summed up by sinks that are saved, and replaced by restored ones, between the rows. The first bytes of each
// row are restored as a saved position.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <utility>

#include <boost/exception/get_error_info.hpp>

#include "Common/IO/BranchSink.h"
#include "Common/IO/CRCSink.h"
#include "Common/IO/SinkSerializer.h"
#include "SerializersInput.h"
#include "serializers/binary/little_endian.h"
#include "src/Common/IO/FakeTransaction.h"

namespace {

using namespace DAX::Common::IO;
using DAX::Fuzz::MAX_WIDTH;
using DAX::Fuzz::Step;
using serializers::binary::little_endian;
using Bytes = std::vector<std::uint8_t>;
__extension__ using Wide = unsigned __int128; // of MAX_WIDTH bytes

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

// Keeps the bytes that are saved, or gives the bytes to load.
class Memory : public serializers::binary::ISerializer {
public:
    Memory() = default;
    explicit Memory(Bytes content) : bytes(std::move(content)), m_saving(false) {}

    bool saving() override { return m_saving; }
    void serializeData(std::uint8_t* data, std::size_t size) override {
        if (m_saving) {
            bytes.insert(bytes.end(), data, data + size);
        } else {
            require(size == bytes.size(), "another number of bytes is loaded");
            std::copy(bytes.begin(), bytes.end(), data);
        }
    }

    Bytes bytes;

private:
    const bool m_saving = true;
};

// A file in memory.
class MemorySink : public ISeekableSink {
public:
    void writeChunk(const std::uint8_t* data, std::size_t size) override {
        bytes.resize(std::max<std::size_t>(bytes.size(), offset + size));
        std::copy_n(data, size, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
        offset += size;
    }
    void markEndOfData() override {}
    bool endOfDataMarked() override { return false; }
    streamsize_t position() override { return offset; }
    void seek(streamsize_t position) override { offset = position; }

    Bytes bytes;
    streamsize_t offset = 0;
};

// Where the values of one input go, and what must be there in the end.
struct Output {
    MemorySink sink;
    SinkSerializer serializer{&sink};
    Bytes expected;
};

Wide valueOf(const std::uint8_t* bytes, std::size_t count) {
    Wide value = 0;
    while (count != 0) {
        value = value * 256 + bytes[--count];
    }
    return value;
}

Bytes bytesOf(Wide value, std::size_t count) {
    Bytes bytes;
    for (; bytes.size() < count; value /= 256) {
        bytes.push_back(static_cast<std::uint8_t>(value % 256));
    }
    return bytes;
}

template <class Statement>
bool isRefusedByDirection(const Statement& statement, const std::string& description) {
    try {
        statement();
    } catch (const serializers::serialization_exception& exception) {
        return *boost::get_error_info<serializers::errinfo_description>(exception) == description;
    }
    return false;
}

template <class T, std::size_t N>
void checkSaving(T value, Output& output) {
    const bool fits = valueOf(bytesOf(value, N).data(), N) == value;
    const T before = value;
    Memory memory;
    try {
        memory.serialize<little_endian<N>>(value);
        require(fits, "a value is cut");
    } catch (const serializers::lossy_conversion& exception) {
        using Tag = serializers::binary::detail::tag_cant_store_type_in_this_number_of_bytes;
        require(!fits, "a value that fits is refused");
        require(*boost::get_error_info<boost::error_info<Tag, T>>(exception) == N, "another number of bytes is told");
    }
    require(value == before, "saving changes the value");
    require(memory.bytes == (fits ? bytesOf(value, N) : Bytes()), "other bytes are saved");
    if (fits) {
        output.sink.seek(value % 64);
        output.serializer.save<little_endian<N>>(value);
        output.expected.insert(output.expected.end(), memory.bytes.begin(), memory.bytes.end());
    }
    require(isRefusedByDirection([&] { memory.load<little_endian<N>>(value); }, "Can't load from a saving serializer."),
            "a saving serializer loads");
}

template <class T, std::size_t N>
void checkLoading(const Bytes& bytes, T value) {
    const Wide expected = valueOf(bytes.data(), N);
    const bool fits = expected <= std::numeric_limits<T>::max();
    const T before = value;
    Memory memory(bytes);
    for (const bool eitherWay : {false, true}) {
        value = before;
        try {
            eitherWay ? memory.serialize<little_endian<N>>(value) : memory.load<little_endian<N>>(value);
            require(fits && value == expected, "another value is loaded");
        } catch (const serializers::lossy_conversion&) {
            require(!fits && value == before, "a value that fits is refused, or a refused one changes");
        }
    }
    require(isRefusedByDirection([&] { memory.save<little_endian<N>>(value); }, "Can't save to a loading serializer."),
            "a loading serializer saves");
}

template <class T, std::size_t N>
void check(const Step& step, Output& output) {
    const T value = static_cast<T>(valueOf(step.bytes.data(), 8));
    checkSaving<T, N>(value, output);
    checkLoading<T, N>(Bytes(step.bytes.begin(), step.bytes.begin() + N), value);
}

template <class T, std::size_t... Index>
void checkWidth(const Step& step, Output& output, std::index_sequence<Index...>) {
    ((Index + 1 == step.width ? check<T, Index + 1>(step, output) : void()), ...);
}

template <class... T>
void checkType(const Step& step, Output& output) {
    std::size_t type = 0;
    ((type++ == step.type ? checkWidth<T>(step, output, std::make_index_sequence<MAX_WIDTH>()) : void()), ...);
}

// A checksum, and another one in a branch of its own.
struct Sums {
    explicit Sums(bool passEndOfData) : sink(passEndOfData), inner(std::make_shared<BranchSink>(passEndOfData)) {
        sink.addBranch(outerSum);
        sink.addBranch(inner);
        inner->addBranch(innerSum);
    }

    BranchSink sink;
    const std::shared_ptr<BranchSink> inner;
    const std::shared_ptr<CRCSink<Crc32>> outerSum = std::make_shared<CRCSink<Crc32>>();
    const std::shared_ptr<CRCSink<Crc32>> innerSum = std::make_shared<CRCSink<Crc32>>();
};

Bytes saved(Sums& sums) {
    DAX::Tests::FakeTransaction transaction;
    sums.sink.transactionSerialize(&transaction);
    return transaction.bytes;
}

void restore(Sums& sums, const Bytes& bytes) {
    DAX::Tests::FakeTransaction transaction(bytes);
    sums.sink.transactionSerialize(&transaction);
    require(transaction.bytes.empty(), "less is restored than was saved");
}

// A plain computation of the checksum's remainder after these bytes, from the remainder before them. A sum is the
// inverted remainder.
std::uint32_t remainderBehind(std::uint32_t remainder, const Bytes& bytes) {
    for (const std::uint8_t byte : bytes) {
        remainder ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = remainder / 2 ^ (remainder % 2 != 0 ? 0xEDB88320U : 0U);
        }
    }
    return remainder;
}

// The saved form has two equal halves: the flag of a branch, the flag of its sum, and the sum's remainder.
Bytes place(bool ended, bool sumEnded, std::uint32_t remainder) {
    Bytes half{ended, sumEnded};
    const Bytes bytes = bytesOf(remainder, 4);
    half.insert(half.end(), bytes.begin(), bytes.end());
    Bytes both = half;
    both.insert(both.end(), half.begin(), half.end());
    return both;
}

bool takes(ISink& sink, const Bytes& bytes) {
    try {
        sink.writeChunk(bytes.data(), bytes.size());
    } catch (const IOExceptions::EndOfDataMarkedException&) {
        return false;
    }
    return true;
}

void checkResuming(const std::vector<Step>& steps, bool passEndOfData) {
    auto sums = std::make_unique<Sums>(passEndOfData);
    const auto replace = [&](const Bytes& expected) {
        require(saved(*sums) == expected, "another place is saved");
        sums = std::make_unique<Sums>(passEndOfData);
        restore(*sums, expected);
        require(saved(*sums) == expected, "another place is restored");
    };
    std::uint32_t remainder = 0xFFFFFFFF;
    for (const Step& step : steps) {
        const Bytes bytes(step.bytes.begin(), step.bytes.begin() + static_cast<std::ptrdiff_t>(step.width));
        require(takes(sums->sink, bytes), "an open sink refuses");
        remainder = remainderBehind(remainder, bytes);
        replace(place(false, false, remainder));
    }
    sums->sink.markEndOfData();
    Bytes ended = place(true, true, remainder);
    if (!passEndOfData) {
        ended = place(false, false, remainder);
        ended[0] = 1;
    }
    replace(ended);
    require(!takes(sums->sink, {0}), "a restored end is none");
    require(sums->outerSum->getCRC32() == ~remainder && sums->innerSum->getCRC32() == ~remainder, "another sum");
}

// Any byte except 0 is a flag that is set. Data does not pass the first flag that is set.
void checkRestoring(const Step& step) {
    Bytes bytes(step.bytes.begin(), step.bytes.begin() + 12);
    const auto outer = static_cast<std::uint32_t>(valueOf(&bytes[2], 4));
    const auto inner = static_cast<std::uint32_t>(valueOf(&bytes[8], 4));
    Sums sums(true);
    restore(sums, bytes);
    for (const std::size_t flag : {0U, 1U, 6U, 7U}) {
        bytes[flag] = bytes[flag] != 0 ? 1 : 0;
    }
    require(saved(sums) == bytes, "another place is saved than was restored");

    const Bytes data(step.bytes.begin(), step.bytes.end());
    const bool toOuter = bytes[0] == 0 && bytes[1] == 0;
    const bool toInner = toOuter && bytes[6] == 0 && bytes[7] == 0;
    require(takes(sums.sink, data) == toInner, "data behind the end is taken, or data before it refused");
    require(sums.outerSum->getCRC32() == ~(toOuter ? remainderBehind(outer, data) : outer), "another outer sum");
    require(sums.innerSum->getCRC32() == ~(toInner ? remainderBehind(inner, data) : inner), "another inner sum");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<Step> steps = DAX::Fuzz::readSerializersInput(data, size);
    Output output;
    for (const Step& step : steps) {
        checkType<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>(step, output);
        checkRestoring(step);
    }
    require(output.sink.bytes == output.expected, "the sink holds other bytes");
    checkResuming(steps, false);
    checkResuming(steps, true);
    return 0;
}
