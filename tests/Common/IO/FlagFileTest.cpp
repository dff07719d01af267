#include "Common/IO/FlagFile.h"

#include <gmock/gmock.h>

#include "Common/IO/FileExceptions.h"
#include "FileFaults.h"
#include "support/TemporaryRoot.h"

namespace DAX {
namespace Tests {
namespace {

using Common::IO::writeFlagFile;

class FlagFileTest : public testing::Test {
protected:
    const TemporaryRoot root;
    const std::string path = (root / "flag").string();
};

TEST_F(FlagFileTest, HoldsItsLines) {
    writeFlagFile(path, {"One.", "", "Two."});
    EXPECT_EQ(root.read("flag"), "One.\n\nTwo.\n");
}

TEST_F(FlagFileTest, IsEmptyWithoutLines) {
    writeFlagFile(path);
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(root.read("flag"), "");
}

TEST_F(FlagFileTest, TakesThePlaceOfWhatStoodThere) {
    root.write("flag", "something longer than the new line");
    writeFlagFile(path, {"New."});
    EXPECT_EQ(root.read("flag"), "New.\n");
}

TEST_F(FlagFileTest, WritesALineAtATime) {
    const std::vector<std::string> calls = callsOf([this] { writeFlagFile(path, {"One.", "Two."}); });
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "fwrite"), 2);
}

TEST_F(FlagFileTest, SaysThatItCannotBeMade) {
    EXPECT_THROW(writeFlagFile((root / "absent/flag").string()), Common::IO::FileSinkIOException);
}

TEST_F(FlagFileTest, SaysThatItCannotBeWritten) {
    failNext("fwrite", EIO, 2);
    EXPECT_THROW(writeFlagFile(path, {"One.", "Two."}), Common::IO::FileSinkIOException);
}

} // namespace
} // namespace Tests
} // namespace DAX
