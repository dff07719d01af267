// What daxctl monitor makes of captures of real runs. tests/golden/monitor has each capture, and beside it the text,
// the lines of JSON and the picture.
#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

#include <gmock/gmock.h>

#include "monitor/LineBreaks.h"
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

// The lines that a terminal of so many columns gets.
std::vector<std::string> linesOnTerminal(const std::string& columns, const std::string& capture) {
    Command command;
    command.line = {"script", "-qec", "stty cols " + columns + " && " DAXCTL " monitor --read " + capture, "/dev/null"};
    command.environment = {{"TERM", "xterm"}, {"NO_COLOR", std::nullopt}};
    std::istringstream shown(run(command).output);
    std::vector<std::string> lines;
    for (std::string line; std::getline(shown, line);) {
        lines.push_back(line.substr(0, line.find('\r')));
    }
    return lines;
}

std::string withoutColours(const std::string& line) {
    return std::regex_replace(line, std::regex("\x1b\\[[0-9]*m"), "");
}

TEST_P(GoldenCapture, FitsIntoTheTerminal) {
    for (const int columns : {132, 80, 60, 40}) {
        const auto lines = linesOnTerminal(std::to_string(columns), fileOf(".pcap"));
        EXPECT_THAT(lines, SizeIs(Gt(80U)));
        for (auto line = lines.begin(); line != lines.end() && !line->empty(); ++line) { // up to the summary
            EXPECT_LE(monitor::letterCount(withoutColours(*line)), columns) << *line;
        }
    }
}

TEST_P(GoldenCapture, HasColoursOnATerminal) {
    const auto lines = linesOnTerminal("400", fileOf(".pcap"));
    std::string plain;
    for (const std::string& line : lines) {
        plain += withoutColours(line) + "\n";
    }
    EXPECT_EQ(plain, contentOf(".txt"));
    EXPECT_THAT(lines, Contains(HasSubstr("\x1b[36m#1    > getService\x1b[0m  ")));
}

INSTANTIATE_TEST_SUITE_P(Of, GoldenCapture, Values("upgrade", "take-over", "core-failure"), [](const auto& capture) {
    std::string name = capture.param;
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
});

TEST(PictureInTheDocuments, IsTheOneOfTheUpgrade) {
    const std::string header = __FILE__;
    const std::string top = header.substr(0, header.rfind("tests/"));
    const auto contentOf = [](const std::string& path) {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    EXPECT_EQ(contentOf(top + "docs/pictures/monitor-upgrade.svg"),
              contentOf(top + "tests/golden/monitor/upgrade.svg"));
}

// Each tool has watched a bus on which clients asked for the version, acquired a lock and released it. busctl's file is
// of the newer format, pcapng.
struct OtherTool {
    const char* name;
    int lockId;
};
class CaptureOfAnotherTool : public TestWithParam<OtherTool> {};

TEST_P(CaptureOfAnotherTool, ReadsAsEveryOther) {
    const std::string header = __FILE__;
    const std::string file = header.substr(0, header.rfind("system/")) + "golden/monitor/" + GetParam().name + ".pcap";
    const auto run = daxctl({"monitor", "--json", "--service", "--method", "getCurrentVersion", "--method",
                             "acquireExternalLock", "--method", "releaseExternalLock", "--read", file});
    EXPECT_EQ(run.end, ProcessEnd::exited(0)) << run.errors;
    EXPECT_EQ(faultsBySchema(run.output), "");
    std::vector<std::string> answers;
    for (const auto& line : jsonLines(run.output)) {
        EXPECT_NE(line["event"], "note") << line;
        if (line["event"] == "answer") {
            answers.push_back(line["method"].get<std::string>() + " " + line["result"].dump());
        }
    }
    EXPECT_THAT(answers, ElementsAre("getCurrentVersion {\"version\":\"1000\"}",
                                     "acquireExternalLock {\"lockId\":" + std::to_string(GetParam().lockId) + "}",
                                     "releaseExternalLock null"));
}

INSTANTIATE_TEST_SUITE_P(Of, CaptureOfAnotherTool, Values(OtherTool{"dbus-monitor", 1}, OtherTool{"busctl", 2}),
                         [](const auto& tool) { return tool.param.lockId == 1 ? "dbus_monitor" : "busctl"; });

} // namespace
} // namespace DAX::Tests
