#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Common/IO/ISink.h"
#include "Common/IO/IStream.h"

namespace DAX::Tests {

inline const std::uint8_t* bytesOf(const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

// Gives a text, at most `chunk` bytes at a time.
class MemoryStream : public Common::IO::IStream {
public:
    explicit MemoryStream(std::string text, std::size_t chunk = 1000000) : m_text(std::move(text)), m_chunk(chunk) {}

    std::size_t readChunk(std::uint8_t* data, std::size_t size) override {
        ++reads;
        const std::size_t count = std::min({size, m_chunk, m_text.size() - m_position});
        std::copy_n(bytesOf(m_text) + m_position, count, data);
        m_position += count;
        return count;
    }

    int reads = 0;

private:
    const std::string m_text;
    const std::size_t m_chunk;
    std::size_t m_position = 0;
};

// Gives a text with positions; it does not check that a position lies within the text.
class MemorySeekableStream : public Common::IO::ISeekableStream {
public:
    explicit MemorySeekableStream(std::string content) : text(std::move(content)) {}

    std::size_t readChunk(std::uint8_t* data, std::size_t size) override {
        ++reads;
        const std::size_t count = std::min(size, text.size() - offset);
        std::copy_n(bytesOf(text) + offset, count, data);
        offset += count;
        return count;
    }
    bool atEnd() override { return offset == text.size(); }
    Common::IO::streamsize_t position() override { return offset; }
    void seek(Common::IO::streamsize_t position) override { offset = position; }
    Common::IO::streamsize_t size() override { return text.size(); }

    std::string text;
    std::size_t offset = 0;
    int reads = 0;
};

// Keeps what is written, and describes each call.
class MemorySink : public Common::IO::ISink {
public:
    void writeChunk(const std::uint8_t* data, std::size_t size) override {
        throwIfEndOfDataMarked();
        calls.push_back(data == nullptr ? "write null" : "write " + std::string(data, data + size));
        text.append(data, data + size);
    }
    void markEndOfData() override {
        throwIfEndOfDataMarked();
        calls.push_back("mark");
        m_marked = true;
    }
    bool endOfDataMarked() override { return m_marked; }

    std::string text;
    std::vector<std::string> calls;

private:
    bool m_marked = false;
};

} // namespace DAX::Tests
