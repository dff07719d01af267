#include "SystemControlTest.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemControl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string PREFIX_FILE = "usr/share/org.kovan.tv.dax/woc/WocKeyPrefix.txt";

class WocPrefixTest : public SystemControlTest {};

TEST_F(WocPrefixTest, IsTheWholeTextOfItsFile) {
    for (const std::string& text : {std::string(""), std::string(" PRE_\n"), std::string(3000, 'x')}) {
        root.write(PREFIX_FILE, text);
        EXPECT_EQ(ISystemControl::getWocOTNModelPrefix(), text);
    }
}

TEST_F(WocPrefixTest, IsInTheLog) {
    root.write(PREFIX_FILE, "PRE_");
    ISystemControl::getWocOTNModelPrefix();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log INF Returning WOC OTN Model prefix: PRE_"));
}

TEST_F(WocPrefixTest, ThrowsWithItsPathWhenItIsMissing) {
    EXPECT_EQ(thrownText<Common::Utils::errinfo_stream_text>(ISystemControl::getWocOTNModelPrefix),
              "WOC OTN Model prefix file does not exist: " + (root / PREFIX_FILE).string());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(WocPrefixTest, CannotBeReadFromADirectory) {
    std::filesystem::create_directories(root / PREFIX_FILE);
    EXPECT_EQ(thrownDescription(ISystemControl::getWocOTNModelPrefix),
              "Error when reading WOC OTN Model prefix from file.");
    EXPECT_THAT(told("ERR"), HasSubstr("FileStreamIOException"));
    EXPECT_EQ(FakeKovan::messages().size(), FakeKovan::messages("ERR").size());
}

} // namespace
} // namespace DAX::Tests
