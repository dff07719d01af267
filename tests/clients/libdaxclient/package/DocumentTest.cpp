// The code of docs/client.md. A block with a main() is a whole program; the others stand in a function that has a
// client, a session and a transaction.
#include <algorithm>

#include <gmock/gmock.h>

#include "Installed.h"
#include "support/Sanitizer.h"

namespace DAX::Tests {
namespace {

std::vector<std::string> blocksOf(const std::string& document, const std::string& language = "cpp") {
    const std::string begin = "```" + language + "\n";
    std::vector<std::string> blocks;
    for (std::size_t at = document.find(begin); at != std::string::npos; at = document.find(begin, at)) {
        at += begin.size();
        blocks.push_back(document.substr(at, document.find("```", at) - at));
    }
    return blocks;
}

bool isProgram(const std::string& block) {
    return block.find("int main(") != std::string::npos;
}

// All other blocks, each in a function of its own.
std::string recipesOf(const std::vector<std::string>& blocks) {
    std::string source = "#include <dax/client.h>\n#include <cstdio>\n#include <thread>\n";
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (!isProgram(blocks[i])) {
            source += "void recipe" + std::to_string(i) +
                      "([[maybe_unused]] dax::Client& client, [[maybe_unused]] dax::Session& session, "
                      "[[maybe_unused]] dax::Transaction& transaction) {\n" +
                      blocks[i] + "}\n";
        }
    }
    return source;
}

void compile(const Installed& installed, const std::string& text) {
    const std::string source = (installed.root() / "block.cpp").string();
    std::ofstream(source) << text;
    outputOf({"g++", "-std=c++17", "-Wall", "-Wextra", "-Werror", "-fsyntax-only",
              "-I" + (installed.prefix() / "include").string(), source});
    EXPECT_FALSE(testing::Test::HasFailure()) << text;
}

std::string document() {
    return textOf(std::string(SOURCE_FOLDER) + "/docs/client.md");
}

TEST(Document, HasAFirstClientThatIsBuiltWithCMake) {
    if (HAS_SANITIZER) {
        GTEST_SKIP() << "the library needs programs that are built with the sanitizer";
    }
    const Installed installed;
    const std::filesystem::path project = installed.root() / "project";
    std::filesystem::create_directory(project);
    const std::vector<std::string> builds = blocksOf(document(), "cmake");
    ASSERT_EQ(builds.size(), 1U);
    std::ofstream(project / "CMakeLists.txt") << builds.front();
    std::ofstream(project / "first.cpp") << blocksOf(document()).front();
    outputOf({CMAKE_PROGRAM, "-S", project.string(), "-B", (project / "build").string(), "-G", "Unix Makefiles",
              "-DCMAKE_PREFIX_PATH=" + installed.prefix().string(), "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror",
              "-Werror=dev"});
    outputOf({CMAKE_PROGRAM, "--build", (project / "build").string()});
    EXPECT_TRUE(std::filesystem::exists(project / "build/first"));
}

TEST(Document, HasCodeThatCompiles) {
    const Installed installed;
    const std::vector<std::string> blocks = blocksOf(document());
    EXPECT_GE(std::count_if(blocks.begin(), blocks.end(), isProgram), 1);
    EXPECT_GE(blocks.size(), 5U);
    for (const std::string& block : blocks) {
        if (isProgram(block)) {
            compile(installed, block);
        }
    }
    compile(installed, recipesOf(blocks));
}

} // namespace
} // namespace DAX::Tests
