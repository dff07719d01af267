#include <filesystem>
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
    CheckContracts() : ScriptTree({"check-contracts", "layers.py"}) {
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

TEST_F(CheckContracts, RefuseAClassOfAnyRoom) {
    write("include/Size.h", "struct Size {};\n");
    write("platform/include/door.h", "class Door {};\n");
    write("platform/host/Hinge.h", "class Hinge {};\n");
    write("AdditionalDependencies/Chests/Chest.h", "class Chest {};\n");
    write("clients/visitor/include/Visitor.h", "class Visitor {};\n");
    write("simulators/Ghost.hpp", "class Ghost {};\n");
    expectRefused("AdditionalDependencies/Chests/Chest.h:1: class Chest has no comment\n"
                  "clients/visitor/include/Visitor.h:1: class Visitor has no comment\n"
                  "include/Size.h:1: class Size has no comment\n"
                  "platform/host/Hinge.h:1: class Hinge has no comment\n"
                  "platform/include/door.h:1: class Door has no comment\n"
                  "simulators/Ghost.hpp:1: class Ghost has no comment\n");
}

TEST_F(CheckContracts, RefuseAClassHoweverItIsSpelled) {
    write("src/Room/IDoor.h", "class ROOM_API A : public B {};\n"
                              "class ROOM_API(1) C final {};\n"
                              "class [[deprecated(\"no\")]] D {};\n"
                              "struct alignas(sizeof(int)) E {};\n"
                              "struct __attribute__((visibility(\"hidden\"))) F {};\n"
                              "union G {};\n"
                              "typedef struct {\n"
                              "} H;\n"
                              "typedef struct i {\n"
                              "} I;\n"
                              "template <class T = std::vector<int>>\n"
                              "struct J<std::list<T>> : K {};\n"
                              "/* A block. */ class L {};\n");
    expectRefused("src/Room/IDoor.h:1: class A has no comment\n"
                  "src/Room/IDoor.h:2: class C has no comment\n"
                  "src/Room/IDoor.h:3: class D has no comment\n"
                  "src/Room/IDoor.h:4: class E has no comment\n"
                  "src/Room/IDoor.h:5: class F has no comment\n"
                  "src/Room/IDoor.h:6: class G has no comment\n"
                  "src/Room/IDoor.h:7: class (unnamed) has no comment\n"
                  "src/Room/IDoor.h:9: class i has no comment\n"
                  "src/Room/IDoor.h:11: class J has no comment\n"
                  "src/Room/IDoor.h:13: class L has no comment\n");
}

TEST_F(CheckContracts, RefuseAStaticWhateverStandsBeforeIt) {
    write("src/Room/IDoor.h", "// A door.\n"
                              "class ROOM_API IDoor {\n"
                              "public:\n"
                              "    [[nodiscard(\"a width\")]] static int a();\n"
                              "\n"
                              "    inline static int b() { return 1; }\n"
                              "\n"
                              "    constexpr static int c();\n"
                              "\n"
                              "    template <class T = int>\n"
                              "    static T d(T first = T());\n"
                              "\n"
                              "    int static e();\n"
                              "\n"
                              "    __attribute__((noinline)) static int f();\n"
                              "};\n");
    expectRefused("src/Room/IDoor.h:4: static a has no comment\n"
                  "src/Room/IDoor.h:6: static b has no comment\n"
                  "src/Room/IDoor.h:8: static c has no comment\n"
                  "src/Room/IDoor.h:10: static d has no comment\n"
                  "src/Room/IDoor.h:13: static e has no comment\n"
                  "src/Room/IDoor.h:15: static f has no comment\n");
}

TEST_F(CheckContracts, AcceptWhatIsNoOperationAndNoClass) {
    write("src/Room/IDoor.h", "class Declared;\n"
                              "union Told;\n"
                              "typedef struct hinge_s* hinge_h;\n"
                              "// A door.\n"
                              "class IDoor {\n"
                              "public:\n"
                              "    static constexpr int WIDTH = widthOf(1);\n"
                              "\n"
                              "    static_assert(isDoor(1));\n"
                              "\n"
                              "    struct sigaction m_before[3] = {};\n"
                              "\n"
                              "    struct sigaction m_now {};\n"
                              "};\n");
    EXPECT_EQ(check().output, "");
}

TEST_F(CheckContracts, LookAtATreeBelowAFolderOfAnyName) {
    std::filesystem::create_directories(m_tree / "Implementation");
    std::filesystem::copy(m_tree / "scripts", m_tree / "Implementation/scripts");
    write("Implementation/src/Room/IDoor.h", "class Door {};\n");
    EXPECT_EQ(runScript("../Implementation/scripts/check-contracts").output,
              "src/Room/IDoor.h:1: class Door has no comment\n");
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

TEST_F(CheckContracts, SayWhichFileCannotBeRead) {
    const FinishedRun missing = check({"nosuch"});
    EXPECT_EQ(missing.errors, "nosuch: No such file or directory\n");
    EXPECT_EQ(missing.end, ProcessEnd::exited(1));

    write("src/Room/IDoor.h", "// \xff\n");
    const FinishedRun foreign = check();
    EXPECT_EQ(foreign.errors, "src/Room/IDoor.h: is not UTF-8\n");
    EXPECT_EQ(foreign.end, ProcessEnd::exited(1));
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
