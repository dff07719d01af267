// What daxctl monitor makes of captures of real runs. tests/golden/monitor has each capture, and beside it the text,
// the lines of JSON and the picture.
#include <algorithm>
#include <fstream>

#include <gmock/gmock.h>

#include "support/TemporaryRoot.h"
#include "support/WireGoldens.h"
#include "system/Monitor/MonitorTool.h"

namespace DAX::Tests {
namespace {

using namespace testing;

class GoldenCapture : public TestWithParam<const char*> {
protected:
    static std::string fileOf(const std::string& end) {
        const std::string header = __FILE__; // tests/system/Monitor/GoldenCapturesTest.cpp
        return header.substr(0, header.rfind("system/")) + "golden/monitor/" + GetParam() + end;
    }
    static std::string contentOf(const std::string& end) {
        std::ifstream file(fileOf(end), std::ios::binary);
        EXPECT_TRUE(file) << fileOf(end);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_P(GoldenCapture, ReadsAsThisText) {
    const auto run = daxctl({"monitor", "--read", fileOf(".pcap")});
    EXPECT_EQ(run.end, ProcessEnd::exited(0)) << run.errors;
    EXPECT_EQ(run.output, contentOf(".txt"));
}

TEST_P(GoldenCapture, ReadsAsTheseLinesOfJson) {
    const auto run = daxctl({"monitor", "--json", "--read", fileOf(".pcap")});
    EXPECT_EQ(run.output, contentOf(".jsonl"));
    EXPECT_EQ(faultsBySchema(run.output), "");
}

TEST_P(GoldenCapture, IsDrawnAsThisPicture) {
    const TemporaryRoot root;
    const auto run = daxctl({"monitor", "--read", fileOf(".pcap"), "--diagram", root / "picture.svg"});
    EXPECT_EQ(run.end, ProcessEnd::exited(0)) << run.errors;
    EXPECT_EQ(root.read("picture.svg"), contentOf(".svg"));
}

INSTANTIATE_TEST_SUITE_P(Of, GoldenCapture, Values("upgrade", "take-over", "core-failure"), [](const auto& capture) {
    std::string name = capture.param;
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
});

} // namespace
} // namespace DAX::Tests
