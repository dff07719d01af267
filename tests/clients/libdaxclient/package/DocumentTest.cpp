// The code of docs/client.md. A block with a main() is a whole program; the others stand in a function that has a
// client, a session and a transaction.
#include <algorithm>

#include <gmock/gmock.h>

#include "Installed.h"

namespace DAX::Tests {
namespace {

std::vector<std::string> blocksOf(const std::string& document) {
    const std::string begin = "```cpp\n";
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

TEST(Document, HasCodeThatCompiles) {
    const Installed installed;
    const std::vector<std::string> blocks = blocksOf(textOf(std::string(SOURCE_FOLDER) + "/docs/client.md"));
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
