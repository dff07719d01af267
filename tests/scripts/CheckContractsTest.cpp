#include <string>

#include <gmock/gmock.h>

#include "scripts/ScriptTree.h"

namespace DAX::Tests {
namespace {

const char INTERFACE[] = "#pragma once\n"
                         "\n"
                         "// What a room offers.\n"
                         "class IRoom {\n"
                         "public:\n"
                         "    virtual ~IRoom() = default;\n"
                         "\n"
                         "    // Opens the door. Throws when it is locked.\n"
                         "    virtual void open(int door,\n"
                         "                      int key) = 0;\n"
                         "\n"
                         "    // In metres.\n"
                         "    virtual float width() const = 0;\n"
                         "    virtual float length() const = 0;\n"
                         "\n"
                         "    virtual void m_open(int door) = 0;\n"
                         "\n"
                         "    int doors = 0;\n"
                         "};\n";

// A tree with a public header in each folder that the script looks at. Everything in it has a comment.
class CheckContracts : public ScriptTree {
protected:
    CheckContracts() : ScriptTree({"check-contracts"}) {
        write("src/Room/IRoom.h", INTERFACE);
        write("src/Room/Implementation/CRoom.h", "class CRoom {};\n");
        write("include/Size.h", "// A size.\nstruct Size {\n    int width;\n};\n");
        write("platform/include/door.h", "// A door.\nstruct door;\n");
        write("AdditionalDependencies/Chests/Chest.h", "// A chest.\nclass Chest {};\n");
    }

    // Writes the interface without this text.
    void writeWithout(const std::string& removed) const {
        std::string text = INTERFACE;
        ASSERT_NE(text.find(removed), std::string::npos);
        write("src/Room/IRoom.h", text.erase(text.find(removed), removed.size()));
    }

    FinishedRun check(const Arguments& options = {}) const { return runScript("check-contracts", {}, options); }

    void expectRefused(const std::string& complaints) const {
        const FinishedRun finished = check();
        EXPECT_EQ(finished.output, complaints) << finished.errors;
        EXPECT_EQ(finished.end, ProcessEnd::exited(1));
    }
};

TEST_F(CheckContracts, PassATreeInWhichEverythingHasAComment) {
    const FinishedRun finished = check();
    EXPECT_EQ(finished.output, "") << finished.errors;
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
}

TEST_F(CheckContracts, RefuseAnOperationBehindTheDestructor) {
    write("src/Room/IDoor.h", "// A door.\n"
                              "class [[nodiscard]] IDoor {\n"
                              "public:\n"
                              "    // Opens it.\n"
                              "    virtual void open() = 0;\n"
                              "    virtual ~IDoor() = default;\n"
                              "    virtual void slam() = 0;\n"
                              "};\n");
    expectRefused("src/Room/IDoor.h:7: pure virtual slam has no comment\n");
}

TEST(CheckContractsOfThisTree, Pass) {
    const FinishedRun finished = runOnThisTree("check-contracts");
    EXPECT_EQ(finished.output, "") << finished.errors;
    EXPECT_EQ(finished.end, ProcessEnd::exited(0));
}

TEST_F(CheckContracts, RefuseAnOperationWhoseCommentWasRemoved) {
    writeWithout("    // Opens the door. Throws when it is locked.\n");
    expectRefused("src/Room/IRoom.h:8: pure virtual open has no comment\n");
}

TEST_F(CheckContracts, RefuseEachOperationOfAGroupWhoseCommentWasRemoved) {
    writeWithout("    // In metres.\n");
    expectRefused("src/Room/IRoom.h:12: pure virtual width has no comment\n"
                  "src/Room/IRoom.h:13: pure virtual length has no comment\n");
}

TEST_F(CheckContracts, RefuseAnOperationAfterTheBlankLineThatEndsAGroup) {
    std::string text = INTERFACE;
    text.insert(text.find("    virtual float length"), "\n");
    write("src/Room/IRoom.h", text);
    expectRefused("src/Room/IRoom.h:15: pure virtual length has no comment\n");
}

TEST_F(CheckContracts, RefuseAClassWhoseCommentWasRemoved) {
    writeWithout("// What a room offers.\n");
    expectRefused("src/Room/IRoom.h:3: class IRoom has no comment\n");
}

TEST_F(CheckContracts, RefuseAClassOfTheSharedAndOfThePlatformHeaders) {
    write("include/Size.h", "struct Size {};\n");
    write("platform/include/door.h", "class Door {};\n");
    write("AdditionalDependencies/Chests/Chest.h", "class Chest {};\n");
    expectRefused("include/Size.h:1: class Size has no comment\n"
                  "platform/include/door.h:1: class Door has no comment\n"
                  "AdditionalDependencies/Chests/Chest.h:1: class Chest has no comment\n");
}

TEST_F(CheckContracts, RefuseAStaticOfAFacade) {
    write("src/Room/IDoor.h", "// A door.\n"
                              "class IDoor {\n"
                              "public:\n"
                              "    static int width();\n"
                              "};\n");
    expectRefused("src/Room/IDoor.h:4: static width has no comment\n");
}

TEST_F(CheckContracts, TakeACommentWithoutWordsOrForAToolForNone) {
    write("src/Room/IDoor.h", "// A door.\n"
                              "class IDoor {\n"
                              "public:\n"
                              "    //\n"
                              "    virtual void open() = 0;\n"
                              "\n"
                              "    virtual void shut() = 0; // NOLINT(some-check)\n"
                              "\n"
                              "    // clang-format off\n"
                              "    virtual void slam() = 0;\n"
                              "};\n");
    expectRefused("src/Room/IDoor.h:5: pure virtual open has no comment\n"
                  "src/Room/IDoor.h:7: pure virtual shut has no comment\n"
                  "src/Room/IDoor.h:10: pure virtual slam has no comment\n");
}

TEST_F(CheckContracts, CountWhatHasACommentAndWhatHasNone) {
    writeWithout("    // In metres.\n");
    const FinishedRun finished = check({"--count"});
    EXPECT_THAT(finished.output, testing::EndsWith("pure virtual: 1 with a comment, 2 without\n"
                                                   "class: 3 with a comment, 0 without\n"
                                                   "static: 0 with a comment, 0 without\n"));
    EXPECT_EQ(finished.end, ProcessEnd::exited(1));
}

} // namespace
} // namespace DAX::Tests
