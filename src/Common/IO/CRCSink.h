#pragma once

#include <array>
#include <cstdint>
#include <string>

#include <boost/crc.hpp>

#include "Common/IO/ISink.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Common/IO/serializeFlag.h"
#include "Utility/Utils/IDebugName.h"
#include "serializers/binary/little_endian.h"

namespace DAX::Common::IO {

// The common CRC-32.
using Crc32 = boost::crc_optimal<32, 0x04C11DB7, 0xFFFFFFFF, 0xFFFFFFFF, true, true>;

// Keeps only the checksum of what is written. Crc gives the constants of a reflected sum of 32 bits. One thread at a
// time.
template <class Crc>
class CRCSink : public ISink, public ITransactionalEntity, public Utils::IDebugName {
public:
    void writeChunk(const std::uint8_t* data, std::size_t size) override {
        throwIfEndOfDataMarked();
        const Table& table = byteTable();
        std::uint32_t remainder = m_remainder;
        for (const std::uint8_t* const end = data + size; data != end; ++data) {
            remainder = (remainder >> 8) ^ table[(remainder ^ *data) & 0xffU];
        }
        m_remainder = remainder;
    }

    void markEndOfData() override {
        throwIfEndOfDataMarked();
        m_endOfDataMarked = true;
    }

    bool endOfDataMarked() override { return m_endOfDataMarked; }

    // The sum of all data. Marks the end of data if it is not marked yet.
    std::uint32_t getCRC32() {
        if (!m_endOfDataMarked) {
            markEndOfData();
        }
        return ~m_remainder;
    }

    void transactionSaved(ITransaction*) override {}

    void transactionSerialize(IStoreTransaction* transaction) override {
        serializeFlag(transaction->serializer(), m_endOfDataMarked);
        transaction->serializer().serialize<serializers::binary::little_endian<4>>(m_remainder);
    }

    std::string debugName() const override { return "CRCSink"; }

private:
    using Table = std::array<std::uint32_t, 256>;

    static const Table& byteTable() {
        static const Table table = makeTable();
        return table;
    }

    static Table makeTable() {
        Table table{};
        for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
            std::uint32_t remainder = byte;
            for (int bit = 0; bit < 8; ++bit) {
                remainder = (remainder >> 1) ^ ((remainder & 1U) != 0 ? reflected(Crc::truncated_polynominal) : 0);
            }
            table[byte] = remainder;
        }
        return table;
    }

    static std::uint32_t reflected(std::uint32_t value) {
        std::uint32_t result = 0;
        for (int bit = 0; bit < 32; ++bit) {
            result |= ((value >> bit) & 1U) << (31 - bit);
        }
        return result;
    }

    bool m_endOfDataMarked = false;
    std::uint32_t m_remainder = Crc::initial_remainder;

    static_assert(Crc::bit_count == 32 && Crc::reflect_input && Crc::reflect_remainder,
                  "the bits are reversed above, which only this form of the sum wants");
    static_assert(Crc::final_xor_value == 0xFFFFFFFF, "the remainder is given inverted");
};

} // namespace DAX::Common::IO
