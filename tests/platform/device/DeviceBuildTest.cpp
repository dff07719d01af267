// What a build for a device needs and leaves, as the tools of the build see it. DeviceBuild.InstallsTheDaemon makes it.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "support/Process.h"

namespace DAX::Tests {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::AnyOfArray;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAreArray;
using Names = std::vector<std::string>;

const char* const DAEMON = DEVICE_ROOT "/usr/bin/DAXService";

std::string outputOf(const std::vector<std::string>& line) {
    const FinishedRun finished = run({line, {{"LC_ALL", "C"}}, {}, {}}, std::chrono::seconds(60));
    EXPECT_EQ(finished.end, ProcessEnd::exited(0)) << line.front() << ": " << finished.errors;
    return finished.output;
}

std::string textOf(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// The first group of each match.
Names allIn(const std::string& text, const std::regex& pattern) {
    Names found;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern); match != std::sregex_iterator(); ++match) {
        found.push_back((*match)[1]);
    }
    return found;
}

std::vector<fs::path> headers() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::path(SOURCE_FOLDER) / "platform/include")) {
        files.push_back(entry.path());
    }
    return files;
}

std::string libraryOf(const fs::path& header) {
    return "lib" + std::regex_replace(header.stem().string(), std::regex("_"), "-") + ".so";
}

Names declaredIn(const fs::path& header) {
    const std::string code = std::regex_replace(textOf(header), std::regex("//[^\n]*|#[^\n]*|__attribute__.*"), "");
    return allIn(code, std::regex("(\\w+)\\([^()]*\\)\\s*;?"));
}

// The functions that a library offers, without their namespaces.
Names offeredBy(const std::string& library) {
    return allIn(outputOf({"nm", "--dynamic", "--defined-only", "--demangle", library}),
                 std::regex(" T (?:\\w+::)*(\\w+)(?:\\(|\n)"));
}

Names neededBy(const std::string& program) {
    return allIn(outputOf({"readelf", "-W", "--dynamic", program}), std::regex("\\(NEEDED\\)[^\\[]*\\[([^\\]]*)\\]"));
}

TEST(DeviceStubs, OfferWhatTheHeadersDeclareAndNothingElse) {
    for (const fs::path& header : headers()) {
        const Names declared = declaredIn(header);
        EXPECT_THAT(declared, Not(IsEmpty())) << header;
        EXPECT_THAT(offeredBy(std::string(STUBS) + "/lib/" + libraryOf(header)), UnorderedElementsAreArray(declared))
            << header;
    }
}

TEST(DeviceStubs, AreTheLibrariesThatTheDocumentNames) {
    const std::string document = textOf(fs::path(SOURCE_FOLDER) / "docs/platform.md");
    for (const fs::path& header : headers()) {
        const std::string library = libraryOf(header);
        EXPECT_THAT(document, HasSubstr("| `" + header.filename().string() + "` | `" +
                                        library.substr(3, library.size() - 6) + "` |"));
    }
}

TEST(DeviceStubs, LetTheBuildFindNoLibraryThatOnlyTheDeskNeeds) {
    const auto isFound = [](const char* package) {
        return run({{"pkg-config", "--exists", package},
                    {{"PKG_CONFIG_LIBDIR", STUBS "/pkgconfig"}, {"PKG_CONFIG_PATH", std::nullopt}},
                    {},
                    {}})
                   .end == ProcessEnd::exited(0);
    };
    EXPECT_TRUE(isFound("dbus-1"));
    EXPECT_TRUE(isFound("glib-2.0"));
    EXPECT_FALSE(isFound("lmdb"));
    EXPECT_FALSE(isFound("libsystemd"));
    EXPECT_FALSE(isFound("libpcap"));
}

TEST(DeviceBuildTest, DaemonNeedsTheDevicesLibrariesAndNoneOfTheDesks) {
    const Names needed = neededBy(DAEMON);
    EXPECT_THAT(needed, IsSupersetOf({"libvconf.so", "libdlog.so", "libdevice-power.so", "libkvplatform.so",
                                      "libhangguard.so", "libproc-stat.so", "libbootclock.so", "libMetricLogger.so",
                                      "libDAXProductionConfig.so"}));
    Names allowed = {"libdbus-1.so.3", "libglib-2.0.so.0", "libstdc++.so.6",      "libm.so.6",
                     "libgcc_s.so.1",  "libc.so.6",        "ld-linux-x86-64.so.2"};
    for (const fs::path& header : headers()) {
        allowed.push_back(libraryOf(header));
    }
    EXPECT_THAT(needed, Each(AnyOf(AnyOfArray(allowed), StartsWith("ld-linux"))));
}

TEST(DeviceBuildTest, CompilesNothingOfTheSimulatedDeviceAndTheTools) {
    const std::string read = outputOf({CMAKE_MAKE_PROGRAM, "-C", DEVICE_BUILD, "-t", "deps"});
    EXPECT_THAT(read, HasSubstr("/platform/include/vconf.h"));
    for (const char* const header : {"/lmdb.h", "/CLI/", "/nlohmann/", "/pcap", "/systemd/", "/gtest/"}) {
        EXPECT_THAT(read, Not(HasSubstr(std::string("/usr/include") + header)));
    }
    for (const char* const folder : {"/platform/host/", "/platform/stubs/", "/simulators/", "/clients/"}) {
        EXPECT_THAT(read, Not(HasSubstr(SOURCE_FOLDER + std::string(folder))));
    }
    EXPECT_THAT(read, Not(HasSubstr("/Implementation/host/")));
}

TEST(DeviceBuildTest, HasNothingOfTheSimulatedDeviceInTheDaemon) {
    const std::string program = textOf(DAEMON);
    EXPECT_THAT(program, HasSubstr("/mnt/systemrw"));
    for (const char* const text : {"KOVAN_ROOT", "KOVAN_DLOG", "KOVAN_STUBS", "device.ini"}) {
        EXPECT_THAT(program, Not(HasSubstr(text)));
    }
}

TEST(DeviceBuildTest, InstallsNoProgramButTheDaemon) {
    Names programs;
    for (const auto& entry : fs::recursive_directory_iterator(DEVICE_ROOT)) {
        if (entry.is_regular_file() && access(entry.path().c_str(), X_OK) == 0 && entry.path().extension() != ".so") {
            programs.push_back(entry.path().lexically_relative(DEVICE_ROOT).string());
        }
    }
    EXPECT_THAT(programs, ElementsAre("usr/bin/DAXService"));
}

} // namespace
} // namespace DAX::Tests
