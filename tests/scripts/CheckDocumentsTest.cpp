#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "scripts/ScriptTree.h"

namespace DAX::Tests {
namespace {

// A tracked tree with one document that explains two texts, and a source that logs both.
class CheckDocuments : public ScriptTree {
protected:
    CheckDocuments() : ScriptTree({"check-documents", "layers.py"}) {
        m_tree.write("docs/debugging.md", "# Debugging\n"
                                          "\n"
                                          "| Text | What to do |\n"
                                          "|---|---|\n"
                                          "| `The room is too small: …` | take another |\n"
                                          "| `The door is locked by …` | find the key |\n");
        m_tree.write("src/Room.cpp", "void f() {\n"
                                     "    DAX_LOG(ERR) << \"The room is too small: \" << size;\n"
                                     "    throwLogged<errinfo_description>(Locked() << errinfo_path(door),\n"
                                     "                                     \"The door is locked by \" + who, HERE);\n"
                                     "}\n");
        git({"init", "--quiet"});
    }

    // What the check complains of, with everything tracked.
    FinishedRun check() const {
        git({"add", "--all"});
        return runScript("check-documents");
    }

    void expectRefused(const std::string& complaints) const {
        const FinishedRun finished = check();
        EXPECT_EQ(finished.errors, complaints);
        EXPECT_EQ(finished.end, ProcessEnd::exited(1));
    }

private:
    void git(const std::vector<std::string>& arguments) const {
        std::vector<std::string> line{"git", "-C", m_tree.path().string()};
        line.insert(line.end(), arguments.begin(), arguments.end());
        ASSERT_EQ(run({line, {}, {}, {}}, LONGEST_SCRIPT).end, ProcessEnd::exited(0));
    }
};

TEST_F(CheckDocuments, PassATreeWhoseErrorsAreExplained) {
    const FinishedRun finished = check();
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
}

TEST_F(CheckDocuments, RefuseATextThatIsLoggedAsAnErrorAndNotExplained) {
    write("src/Hall.cpp", "\nvoid f() { DAX_LOG(FTL) << \"The hall is on fire.\"; }\n");
    expectRefused("src/Hall.cpp:2: not in docs/debugging.md: The hall is on fire.\n");
}

TEST_F(CheckDocuments, RefuseATextThatIsLoggedAndThrownAndNotExplained) {
    write("src/Hall.cpp", "void f() {\n"
                          "    throwLogged(OnFire(), \"The hall is \"\n"
                          "                          \"on fire: \" + name, HERE);\n"
                          "    throwLogged<errinfo_description>(Flooded(), \"The hall is flooded.\", HERE);\n"
                          "}\n");
    expectRefused("src/Hall.cpp:2: not in docs/debugging.md: The hall is on fire:\n"
                  "src/Hall.cpp:4: not in docs/debugging.md: The hall is flooded.\n");
}

TEST_F(CheckDocuments, AcceptAnyTextOfALowerLevel) {
    write("src/Hall.cpp", "void f() { DAX_LOG(WRN) << \"The hall is rather warm.\"; }\n");
    EXPECT_EQ(check().end, ProcessEnd::exited(0));
}

TEST_F(CheckDocuments, RefuseALinkToAHeadingOrAFileThatIsNotThere) {
    write("docs/rooms.md", "[a](debugging.md#debugging) [b](debugging.md#gone)\n[c](gone.md)\n");
    expectRefused("docs/rooms.md:1: the link leads nowhere: debugging.md#gone\n"
                  "docs/rooms.md:2: the link leads nowhere: gone.md\n");
}

TEST_F(CheckDocuments, RefuseALinkThatLeadsNowhereHoweverItIsWritten) {
    write("docs/rooms.md", "[a](gone.md \"A title\")\n"
                           "[b](<gone file.md>)\n"
                           "[c]: gone.md 'A title'\n"
                           "<a class=\"x\" href=\"gone.md\">d</a>\n"
                           "<img src='gone.svg'>\n"
                           "[e](../../outside.md)\n"
                           "[f](/etc/passwd)\n"
                           "[g](../ignored.md)\n"
                           "[h][nowhere]\n"
                           "[i](debugging.md \"A title\") [j](<debugging.md>) [k](https://gone.example)\n");
    write("ignored.md", "");
    write(".gitignore", "/ignored.md\n");
    expectRefused("docs/rooms.md:1: the link leads nowhere: gone.md\n"
                  "docs/rooms.md:2: the link leads nowhere: gone file.md\n"
                  "docs/rooms.md:3: the link leads nowhere: gone.md\n"
                  "docs/rooms.md:4: the link leads nowhere: gone.md\n"
                  "docs/rooms.md:5: the link leads nowhere: gone.svg\n"
                  "docs/rooms.md:6: the link leads nowhere: ../../outside.md\n"
                  "docs/rooms.md:7: the link leads nowhere: /etc/passwd\n"
                  "docs/rooms.md:8: the link leads nowhere: ../ignored.md\n"
                  "docs/rooms.md:9: the link leads nowhere: nowhere\n");
}

TEST_F(CheckDocuments, TakeNoCodeForALink) {
    write("docs/rooms.md", "`[a](gone.md)` ``[b`](gone.md)``\n```\n[c](gone.md)\n[d]: gone.md\n```\n");
    EXPECT_EQ(check().errors, "");
}

TEST_F(CheckDocuments, RefuseATextWhateverBlanksStandAroundItsLevel) {
    write("src/Hall.cpp",
          "void f() { DAX_LOG( ERR ) << \"The hall is on fire.\"; DAX_LOG (FTL) << \"It is gone, too.\"; }\n");
    expectRefused("src/Hall.cpp:1: not in docs/debugging.md: The hall is on fire.\n"
                  "src/Hall.cpp:1: not in docs/debugging.md: It is gone, too.\n");
}

TEST_F(CheckDocuments, RefuseALineOfATableWithAnotherNumberOfColumns) {
    write("docs/rooms.md", "| Room | Size |\n|---|---|\n| hall |\n");
    expectRefused("docs/rooms.md:3: 1 columns, 2 in the head of the table\n");
}

TEST(CheckDocumentsOfThisTree, Pass) {
    if (!std::filesystem::exists(SOURCE_TREE / ".git")) {
        GTEST_SKIP() << "these sources are no checkout of git, so nothing tells which files are tracked";
    }
    const FinishedRun finished = runOnThisTree("check-documents");
    EXPECT_EQ(finished.errors, "");
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
}

} // namespace
} // namespace DAX::Tests
