// Takes any bytes as a checksummed file, or as the payload of one that is written here. A written file has the trailer
// that a plain computation gives. A file is accepted when it has that trailer, and otherwise refused in the one way
// that callers expect. A reader that seeks gets the payload and never the trailer. The verdict is the same in memory,
// and it changes when any single bit of a good file is flipped.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <boost/crc.hpp>

#include "Common/IO/ChecksumedSink.h"
#include "Common/IO/ChecksumedStream.h"
#include "Common/IO/FileSink.h"
#include "Common/IO/FileStream.h"
#include "VerifyChecksumInput.h"
#include "src/Common/IO/MemoryStreams.h"
#include "support/TemporaryRoot.h"

namespace {

using namespace DAX::Common::IO;
using DAX::Fuzz::Move;

const std::size_t TRAILER = 14;

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

std::string trailerOf(const std::string& payload) {
    boost::crc_32_type crc;
    crc.process_bytes(payload.data(), payload.size());
    std::string trailer = "CHECKSUMED";
    for (std::uint64_t rest = crc.checksum(); trailer.size() < TRAILER; rest /= 256) {
        trailer.push_back(static_cast<char>(rest % 256));
    }
    return trailer;
}

bool isRight(const std::string& file) {
    if (file.size() < TRAILER) {
        return false;
    }
    const std::size_t length = file.size() - TRAILER;
    return file.substr(length) == trailerOf(file.substr(0, length));
}

// Reads in chunks of the moves' lengths.
void writePayload(const std::string& path, const std::string& payload, const std::vector<Move>& moves) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(payload.data());
    ChecksumedSink sink(std::make_shared<FileSink>(path, true), true);
    sink.open();
    std::size_t written = 0;
    for (const Move& move : moves) {
        const std::size_t size = std::min<std::size_t>(move.length, payload.size() - written);
        sink.writeChunk(bytes + written, size);
        written += size;
    }
    sink.writeChunk(bytes + written, payload.size() - written);
    require(sink.position() == payload.size(), "the sink stands elsewhere");
    sink.close();
}

void checkSeek(ChecksumedStream& stream, std::size_t place, std::size_t size) {
    const streamsize_t before = stream.position();
    bool refused = false;
    try {
        stream.seek(place);
    } catch (const IOExceptions::OutOfRangeException&) {
        refused = true;
    }
    require(refused == (place > size), "a place behind the end is taken, or one before it refused");
    require(stream.position() == (refused ? before : place), "the stream stands elsewhere");
}

void checkRead(ChecksumedStream& stream, std::size_t length, const std::string& payload) {
    const std::size_t place = stream.position();
    const std::string expected = payload.substr(place, length);
    std::string text(length, '\0');
    text.resize(stream.readChunk(reinterpret_cast<std::uint8_t*>(&text[0]), length));
    require(text == expected, "other bytes are read");
    require(stream.atEnd() == (place + expected.size() == payload.size()), "the end is elsewhere");
}

void checkReading(const std::string& path, const std::string& payload, const std::vector<Move>& moves) {
    ChecksumedStream stream(std::make_shared<FileStream>(path));
    require(stream.size() == payload.size(), "another size");
    for (const Move& move : moves) {
        checkSeek(stream, move.place % (payload.size() + 2), payload.size());
        checkRead(stream, move.length, payload);
    }
    stream.seek(0);
    require(stream.readAllText(1000) == payload, "another payload");
    stream.close();
}

void checkRefusal(const std::string& path) {
    ChecksumedStream stream(std::make_shared<FileStream>(path));
    bool refused = false;
    try {
        stream.open();
    } catch (const IOExceptions::ChecksumedStreamDataCorrupted&) {
        refused = true;
    }
    require(refused && !stream.isOpened(), "a corrupted file opens");
}

bool verifiesInMemory(const std::string& file) {
    return ChecksumedStream::verifyChecksum(std::make_shared<DAX::Tests::MemorySeekableStream>(file));
}

// Each move chooses a bit.
void checkTurnedBits(const std::string& file, const std::vector<Move>& moves) {
    for (const Move& move : moves) {
        std::string turned = file;
        char& byte = turned[move.place % turned.size()];
        byte = static_cast<char>(byte ^ (1 << (move.length % 8)));
        require(!verifiesInMemory(turned), "a turned bit passes");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("KOVAN_DLOG", "none", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    static const DAX::Tests::TemporaryRoot root;
    const std::string path = (root / "file").string();
    const DAX::Fuzz::VerifyChecksumInput input = DAX::Fuzz::readVerifyChecksumInput(data, size);
    std::string file = input.rest;
    if (input.written) {
        writePayload(path, input.rest, input.moves);
        file = root.read("file");
        require(file == input.rest + trailerOf(input.rest), "another file is written");
    } else {
        root.write("file", file);
    }
    const bool right = isRight(file);
    require(ChecksumedStream::verifyChecksum(std::make_shared<FileStream>(path)) == right, "another verdict");
    require(verifiesInMemory(file) == right, "another verdict in memory");
    if (right) {
        checkTurnedBits(file, input.moves);
        checkReading(path, file.substr(0, file.size() - TRAILER), input.moves);
    } else {
        checkRefusal(path);
    }
    return 0;
}
