#include <functional>
#include <set>

#include <gmock/gmock.h>

#include "Common/IO/FileSink.h"
#include "Common/IO/FileStream.h"
#include "Common/IO/ScopedSeekableStream.h"
#include "FileFaults.h"
#include "MemoryStreams.h"
#include "support/TemporaryRoot.h"
#include "support/Thrown.h"

// Each failure tells where it was thrown: the operation that failed, on a line of its own.
namespace DAX::Tests {
namespace {

using namespace Common::IO;
using testing::EndsWith;
using testing::HasSubstr;

class ThrowLocation : public testing::Test {
protected:
    ThrowLocation() { root.write("file", "0123456789"); }

    // Expects the statement to throw in this function of this file, on a line where no other statement threw.
    void expectSite(const char* function, const char* file, const std::function<void()>& statement) {
        const ThrowSite site = siteThrownBy(statement);
        EXPECT_THAT(site.function, HasSubstr(function));
        EXPECT_THAT(site.file, EndsWith(file));
        EXPECT_TRUE(m_sites.emplace(site.file, site.line).second) << function << ", line " << site.line;
    }

    const TemporaryRoot root;
    const std::string path = (root / "file").string();

private:
    std::set<std::pair<std::string, int>> m_sites;
};

class FileStreamThrowLocation : public ThrowLocation {
protected:
    void expectFault(const char* site, const char* function, const std::function<void()>& statement, int call = 1) {
        expectSite(site, "FileStream.cpp", [&] {
            failNext(function, EIO, call);
            statement();
        });
    }

    FileStream stream{path};
};

TEST_F(FileStreamThrowLocation, IsTheOperation) {
    expectFault("FileStream::open()", "fopen64", [&] { FileStream(path).open(); });
    expectFault("FileStream::measure()", "fseeko64", [&] { FileStream(path).open(); });
    expectFault("FileStream::measure()", "ftello64", [&] { FileStream(path).open(); });
    expectFault(
        "FileStream::measure()", "fseeko64", [&] { FileStream(path).open(); }, 2);
    stream.open();
    std::uint8_t data[20];
    expectFault("FileStream::readChunk(", "fread", [&] { stream.readChunk(data, 3); });
    expectFault("FileStream::readChunk(", "fseeko64", [&] { stream.readChunk(data, 3); }); // seeks back first
    expectFault("FileStream::seek(", "fseeko64", [&] { stream.seek(3); });
    expectSite("FileStream::seek(", "FileStream.cpp", [&] { stream.seek(11); });
    expectSite("FileStream::readChunk(", "FileStream.cpp", [&] {
        root.write("file", "0123456789 and more");
        stream.readChunk(data, 11);
    });
    expectFault("FileStream::close()", "fclose", [&] { stream.close(); });
}

class FileSinkThrowLocation : public ThrowLocation {
protected:
    void expectFault(const char* site, const char* function, const std::function<void()>& statement,
                     int errnoValue = EIO) {
        expectSite(site, "FileSink.cpp", [&] {
            failNext(function, errnoValue);
            statement();
        });
    }

    FileSink sink{path, true};
};

TEST_F(FileSinkThrowLocation, IsTheOperation) {
    expectFault("FileSink::open()", "fopen64", [&] { FileSink(path, true).open(); });
    expectFault("FileSink::open()", "fseeko64", [&] { FileSink(path, true).open(); });
    expectFault("FileSink::open()", "ftello64", [&] { FileSink(path, true).open(); });
    sink.open();
    expectFault("FileSink::writeChunk(", "fwrite", [&] { sink.writeChunk(bytesOf("a"), 1); });
    expectFault("FileSink::writeChunk(", "fseeko64", [&] { sink.writeChunk(bytesOf("a"), 1); });
    expectFault(
        "FileSink::writeChunk(", "fwrite", [&] { sink.writeChunk(bytesOf("a"), 1); }, ENOSPC);
    expectFault("FileSink::seek(", "fseeko64", [&] { sink.seek(3); });
    expectFault("FileSink::flush()", "fflush", [&] { sink.flush(); });
    expectFault("FileSink::flush()", "fileno", [&] { sink.flush(); });
    expectFault("FileSink::flush()", "fsync", [&] { sink.flush(); });
    expectFault("FileSink::finishFile()", "fclose", [&] { sink.close(); });
}

TEST_F(ThrowLocation, IsTheUseOfAViewThatMeetsItsBounds) {
    const auto whole = std::make_shared<MemorySeekableStream>("0123456789");
    const auto viewOf = [&whole](streamsize_t start, streamsize_t size) {
        return ScopedSeekableStream(whole, start, size);
    };
    expectSite("::openIfNotOpened()", "ScopedView.cpp", [&] { viewOf(11, 0).size(); });
    expectSite("::openIfNotOpened()", "ScopedView.cpp", [&] { viewOf(5, 6).size(); });
    expectSite("::seek(", "ScopedView.cpp", [&] { viewOf(5, 2).seek(3); });
    ScopedSeekableStream view(whole, 5, 2);
    view.seek(0);
    whole->offset = 4;
    expectSite("::position()", "ScopedView.cpp", [&] { view.position(); });
    whole->offset = 8;
    expectSite("::position()", "ScopedView.cpp", [&] { view.position(); });
}

TEST_F(ThrowLocation, IsTheReadOfAValue) {
    std::uint32_t value = 0;
    expectSite("IStream::read(", "IStream.h", [&] { MemoryStream("").read(value); });
    expectSite("IStream::tryRead(", "IStream.h", [&] { MemoryStream("abc").read(value); });
}

} // namespace
} // namespace DAX::Tests
