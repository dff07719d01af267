// Bad debug files. The same tests also run in a program built with the sanitizers.
#include <algorithm>
#include <sstream>

#include <sys/stat.h>

#include "DebugFileFixture.h"
#include "src/DAXIPC/DBUSLowLevel/BadInput/BoundedMemory.h"
#include "support/Corruption.h"

namespace DAX::Tests {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

const char END_OF_ROOT[] = "</DebugAndTestParameters>";

class BadDebugFile : public DebugFileFixture {
protected:
    // Reads the text as the file into a fresh record.
    bool read(const std::string& text) {
        FakeKovan::forgetRecords();
        write(text);
        record = DebugAndTestParameters();
        return withBoundedMemory(text, [this] { return record.load(); });
    }

    // Expects that the file cannot be read, that one line says so, and that nothing else happens. The library adds the
    // last error of the system to some of its texts.
    void expectFailure(const std::string& text, const std::string& what) {
        EXPECT_FALSE(read(text)) << shown(text);
        EXPECT_THAT(FakeKovan::journal(), ElementsAre(opening(), StartsWith(failure(what)))) << shown(text);
    }

    // Expects that nothing happens except these log lines, whether the file can be read or not.
    void expectNoHarm(const std::string& text) {
        const bool good = read(text);
        const std::vector<std::string> told = FakeKovan::journal();
        ASSERT_EQ(told.size(), good ? 1U : 2U) << shown(text);
        EXPECT_EQ(told.front(), opening());
        EXPECT_TRUE(good || told.back().rfind(failure(""), 0) == 0) << told.back();
    }

    // The elements of the record, one per line, without the free parameters.
    std::vector<std::string> elements() {
        EXPECT_TRUE(record.save());
        std::vector<std::string> lines;
        std::istringstream text(written());
        for (std::string line; std::getline(text, line) && line.find("<customParams") == std::string::npos;) {
            lines.push_back(line);
        }
        return lines;
    }

    std::vector<std::string> elementsOf(const std::string& golden) {
        EXPECT_TRUE(read(goldenDebugFile(golden))) << FakeKovan::journal().back();
        return elements();
    }

    // Expects that the good file with all values changed cannot be read once this text is replaced in it.
    void expectFailure(const std::string& old, const std::string& with, const std::string& what) {
        expectFailure(replaced(changed, old, with), what);
    }

    const std::string changed = goldenDebugFile("changed.xml");
    DebugAndTestParameters record;
};

TEST_F(BadDebugFile, IsEmpty) {
    expectFailure("", "input stream error");
    EXPECT_EQ(elements(), elementsOf("defaults.xml"));
}

TEST_F(BadDebugFile, IsAFolder) {
    std::filesystem::create_directory(path());
    EXPECT_FALSE(record.load());
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(opening(), failure("input stream error-Is a directory")));
}

TEST_F(BadDebugFile, IsAPipeThatNobodyWaitsFor) {
    ASSERT_EQ(mkfifo(path().c_str(), 0666), 0);
    EXPECT_FALSE(record.load());
    std::filesystem::remove(path());
    std::filesystem::create_symlink("/dev/zero", path());
    EXPECT_FALSE(record.load());
    const std::string line = "log WRN Failed to open DebugAndTestParameters from " + path();
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(opening(), line, opening(), line));
}

TEST_F(BadDebugFile, IsTooLarge) {
    write(changed + std::string(4 * 1024 * 1024, '\n'));
    EXPECT_FALSE(record.load());
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(opening(), "log WRN Failed to open DebugAndTestParameters from " + path()));
}

TEST_F(BadDebugFile, MayBeASymbolicLink) {
    write(changed);
    std::filesystem::rename(path(), path() + ".elsewhere");
    std::filesystem::create_symlink(path() + ".elsewhere", path());
    EXPECT_TRUE(record.load());
}

TEST_F(BadDebugFile, IsCutAnywhere) {
    const std::size_t end = changed.find(END_OF_ROOT) + sizeof(END_OF_ROOT) - 1;
    for (const std::string& cut : cutsOf(changed)) {
        const bool complete = cut.size() >= end;
        EXPECT_EQ(read(cut), complete) << cut.size();
        const std::vector<std::string> told = FakeKovan::journal();
        ASSERT_EQ(told.size(), complete ? 1U : 2U) << cut.size();
        EXPECT_TRUE(complete || told.back().rfind(failure(""), 0) == 0) << told.back();
    }
}

TEST_F(BadDebugFile, KeepsWhatStandsBeforeTheCutAndLeavesWhatWouldFollow) {
    const std::vector<std::string> before = elementsOf("changed.xml");
    const std::vector<std::string> behind = elementsOf("defaults.xml");
    for (const char* element : {"<noRebootFlag>", "<otnTestServerAddress>", "<durationReduced>", "<verificationScale>",
                                "<serviceTransactionStubScenarioPath>", "<customParams "}) {
        const std::string cut = changed.substr(0, changed.find(element));
        ASSERT_FALSE(read(cut));
        const std::vector<std::string> kept = elements();
        const auto lines = std::count(cut.begin(), cut.end(), '\n');
        const auto left = static_cast<std::ptrdiff_t>(kept.size()) - lines;
        EXPECT_TRUE(std::equal(kept.begin(), kept.begin() + lines, before.begin())) << element;
        EXPECT_TRUE(std::equal(kept.end() - left, kept.end(), behind.end() - left)) << element;
    }
}

TEST_F(BadDebugFile, IsOfALaterClassVersion) {
    expectFailure("version=\"1\">\n\t<noRebootFlag>", "version=\"2\">\n\t<noRebootFlag>",
                  "class version DebugAndTestParameters");
    EXPECT_EQ(elements(), elementsOf("defaults.xml"));
}

TEST_F(BadDebugFile, HasPerformanceParametersOfALaterClassVersion) {
    expectFailure("version=\"1\">\n\t\t<flash", "version=\"2\">\n\t\t<flash",
                  "class version InstallationPerformanceParameters");
    EXPECT_TRUE(record.isDurationReduced());
    EXPECT_FALSE(record.getInstallationPerformanceParameters().getFlashStreamBufferSize());
    EXPECT_EQ(record.getServiceTransactionStubScenarioPath(), "");
}

TEST_F(BadDebugFile, IsNoArchive) {
    expectFailure("signature=\"serialization::archive\"", "signature=\"serialization::archives\"", "invalid signature");
    expectFailure("serialization::archive", "serialization::archive" + std::string(100000, 's'), "invalid signature");
    expectFailure("signature=\"serialization::archive\" version=\"18\"",
                  "signature=\"serialization::archive\" version=\"65536\"", "unsupported version");
    expectFailure("<?xml", "<xml", "unrecognized XML syntax");
}

TEST_F(BadDebugFile, HasTooHighAClassIdOrVersionOfTheLibrary) {
    expectNoHarm(replaced(changed, "class_id=\"0\"", "class_id=\"99999\""));
    expectNoHarm(replaced(changed, "version=\"18\"", "version=\"4294967296\""));
    expectNoHarm(replaced(changed, "<item_version>0", "<item_version>4294967295"));
}

TEST_F(BadDebugFile, HasAFlagThatIsNoFlag) {
    for (const char* value : {"yes", "true", "2", "-1", ""}) {
        expectFailure("<skipVersionChecker>1", std::string("<skipVersionChecker>") + value, "input stream error");
        EXPECT_TRUE(record.isSkipCompatibilityChecker());
        EXPECT_FALSE(record.isSkipIntegrityChecker());
    }
}

TEST_F(BadDebugFile, HasALargeNumberThatIsNoNumber) {
    for (const char* value : {"many", "18446744073709551616", ""}) {
        expectFailure("<numberOfFailures>18446744073709551615", std::string("<numberOfFailures>") + value,
                      "input stream error");
        EXPECT_EQ(record.getOTNTestServerAddress(), "other.example:81/");
        EXPECT_FALSE(record.isDurationReduced());
    }
}

TEST_F(BadDebugFile, HasANumberThatIsNoNumber) {
    for (const char* value : {"x", "2147483648", "-2147483649", ""}) {
        expectFailure("<setOTASetServiceOption>-12", std::string("<setOTASetServiceOption>") + value,
                      "input stream error");
        EXPECT_TRUE(record.isDurationReduced());
    }
}

TEST_F(BadDebugFile, HasAFractionThatIsNoFraction) {
    for (const char* value : {"fast", "1e999", ""}) {
        expectFailure("<verificationScale>3.500000000e+00", std::string("<verificationScale>") + value,
                      "input stream error");
        EXPECT_EQ(record.getInstallationPerformanceParameters().getOTADownloadingProgressScale(), 2.5F);
        EXPECT_EQ(record.getInstallationPerformanceParameters().getInstallationProgressScale(), 1.0F);
    }
}

TEST_F(BadDebugFile, HasAnOptionalNumberThatIsNoNumber) {
    expectFailure("<value>101", "<value>big", "input stream error");
    expectFailure("<initialized>1", "<initialized>7", "input stream error");
    EXPECT_TRUE(record.isDurationReduced());
}

TEST_F(BadDebugFile, HasARewriteModeThatIsNoMode) {
    expectFailure("<value>77", "<value>changed", "input stream error");
    EXPECT_EQ(record.getInstallationPerformanceParameters().getForceInstallationRewriteMode(),
              boost::make_optional(Storage::REWRITE_CHANGED));
}

TEST_F(BadDebugFile, HasATextWithAnInvalidEntity) {
    expectFailure("<otnOUItemDownloadDirectory>/download", "<otnOUItemDownloadDirectory>/&nothing;",
                  "unrecognized XML syntax");
    EXPECT_EQ(record.getServiceTransactionStubScenarioPath(), "/service scenario");
    EXPECT_EQ(record.getResumeDataBackupDirectory(), "");
}

TEST_F(BadDebugFile, HasAnElementWhereATextIsDue) {
    expectFailure("/download", "<path>/download</path>", "input stream error");
}

TEST_F(BadDebugFile, HasInvalidFreeParameters) {
    expectFailure("<count>1", "<count>one", "input stream error");
    expectFailure("<first>proxy</first>", "", "XML start/end tag mismatch - first");
    expectFailure("<second>on", "<second>&on;", "unrecognized XML syntax");
    EXPECT_EQ(record.getResumeDataBackupDirectory(), "/backup");
}

TEST_F(BadDebugFile, OfVersion0HasATextForANumber) {
    expectFailure(replaced(goldenDebugFile("version0.xml"), "<second>7", "<second>seven"), "input stream error");
    EXPECT_EQ(record.getCustomStringParam("negative"), boost::none);
}

TEST_F(BadDebugFile, HasNoTuningValuesAndFailsThere) {
    const std::size_t begin = changed.find("\t<installationPerformanceParameters");
    const std::size_t end = changed.find("\t<serviceTransactionStubScenarioPath");
    expectFailure(changed.substr(0, begin) + changed.substr(end), "input stream error");
    EXPECT_TRUE(record.isNoRebootFlag());
    EXPECT_EQ(record.getOTASetServiceOption(), -12);
    EXPECT_EQ(record.getServiceTransactionStubScenarioPath(), "");
}

TEST_F(BadDebugFile, HasTwoElementsInTheOtherOrder) {
    expectFailure(replaced(replaced(changed, "\t<noRebootFlag>1</noRebootFlag>\n", ""), "</skipCompatibilityChecker>\n",
                           "</skipCompatibilityChecker>\n\t<noRebootFlag>1</noRebootFlag>\n"),
                  "XML start/end tag mismatch - noRebootFlag");
}

// The library compares the names of the tag and of the element; neither may be read beyond its end.
TEST_F(BadDebugFile, HasTagsLongerThanTheNamesOfTheElements) {
    for (const char* element :
         {"noRebootFlag", "value", "initialized", "count", "item_version", "first", "second", "item"}) {
        const std::string tag = std::string("</") + element;
        for (const std::size_t more : {1U, 2U, 40U, 100000U}) {
            expectFailure(tag + ">", tag + std::string(more, 'x') + ">",
                          std::string("XML start/end tag mismatch - ") + element);
        }
    }
}

TEST_F(BadDebugFile, MayHaveAnyNameForItsOutermostElement) {
    EXPECT_TRUE(read(replaced(replaced(changed, "<DebugAndTestParameters ", "<Other "), END_OF_ROOT, "</Other>")));
    EXPECT_TRUE(record.isNoRebootFlag());
}

TEST_F(BadDebugFile, DeclaresMoreThanItHolds) {
    for (const std::string& huge : HUGE_LENGTHS) {
        expectFailure("<count>1", "<count>" + huge, "input stream error");
    }
    expectFailure("<count>1", "<count>-1", "input stream error");
}

TEST_F(BadDebugFile, IsLong) {
    const std::string text(1 << 20, 'x');
    expectNoHarm(replaced(changed, "/download", text));
    EXPECT_EQ(record.getOtnOUItemDownloadDirectory(), text);
    expectNoHarm(text);
    expectNoHarm(replaced(changed, "<noRebootFlag>", "<" + text));
    expectNoHarm(replaced(changed, "<noRebootFlag>", "<noRebootFlag " + text));
    expectNoHarm(replaced(changed, "version=\"1\"", "version=\"" + std::string(1 << 20, '1') + "\""));
}

TEST_F(BadDebugFile, TracksItsElements) {
    for (const char* id : {"object_id=\"_0\"", "object_id=\"_9\"", "object_id_reference=\"_0\"",
                           "object_id_reference=\"_4294967295\""}) {
        std::string text = changed;
        for (std::size_t at = 0; (at = text.find("tracking_level=\"0\"", at)) != std::string::npos; ++at) {
            text.replace(at, 18, std::string("tracking_level=\"1\" ") + id);
        }
        expectNoHarm(text);
    }
}

TEST_F(BadDebugFile, HasAnyByteChanged) {
    for (const std::string& change : changesOf(changed, std::string("<9\0\xff", 4))) {
        expectNoHarm(change);
    }
}

TEST_F(BadDebugFile, IsNoise) {
    for (const std::string& text : noise(4096)) {
        expectNoHarm(text);
        const std::size_t body = changed.find("<DebugAndTestParameters");
        expectNoHarm(changed.substr(0, body) + text);
    }
}

} // namespace
} // namespace DAX::Tests
