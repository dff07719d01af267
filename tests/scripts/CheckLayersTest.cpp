#include <chrono>
#include <filesystem>

#include <gmock/gmock.h>

#include "support/Process.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

const std::filesystem::path SOURCE_TREE(SOURCE_FOLDER);

const std::chrono::seconds BOUND(60); // an interpreter on a busy machine

FinishedRun runScript(const std::filesystem::path& script) {
    return run({{script.string()}, {}, {}, {}}, BOUND);
}

// A tree of three modules in two layers, with its own list and picture. It keeps to the list.
class CheckLayers : public testing::Test {
protected:
    CheckLayers() {
        std::filesystem::create_directories(m_tree / "scripts");
        for (const char* const script : {"check-layers", "draw-layers", "layers.py"}) {
            std::filesystem::copy_file(SOURCE_TREE / "scripts" / script, m_tree / "scripts" / script);
        }
        write("cmake/Layers.txt", "layer low: what carries\n"
                                  "  First src/First\n"
                                  "  Second src/Second\n"
                                  "layer high: what is carried\n"
                                  "  uses low\n"
                                  "  Top src/Top\n");
        write("src/First/First.h", "#include <vector>\n");
        write("src/First/Implementation/First.cpp",
              "#include \"First/First.h\"\n#include \"First/Implementation/In.h\"\n");
        write("src/First/Implementation/In.h", "");
        write("src/First/CMakeLists.txt", "dax_module(First)\n");
        write("src/Second/Second.h", "#include \"First/First.h\"\n");
        write("src/Second/CMakeLists.txt", "dax_module(Second PUBLIC First Boost::thread)\n");
        write("src/Top/Top.h", "#include \"First/First.h\"\n#include \"Second/Second.h\"\n");
        write("src/Top/CMakeLists.txt", "dax_program(Top LINK First\n            Second) # not Nobody\n");
        write("docs/pictures/layers.svg", "");
        EXPECT_EQ(runScript(m_tree / "scripts/draw-layers").end, ProcessEnd::exited(0));
    }

    void write(const std::string& file, const std::string& text) const { m_tree.write(file, text); }

    void expectRefused(const std::string& complaints) const {
        const FinishedRun run = runScript(m_tree / "scripts/check-layers");
        EXPECT_EQ(run.output, complaints) << run.errors;
        EXPECT_EQ(run.end, ProcessEnd::exited(1));
    }

    const TemporaryRoot m_tree;
};

TEST_F(CheckLayers, PassesATreeThatKeepsToItsList) {
    const FinishedRun run = runScript(m_tree / "scripts/check-layers");
    EXPECT_EQ(run.output, "") << run.errors;
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
}

TEST(CheckLayersOfThisTree, Pass) {
    const FinishedRun run = runScript(SOURCE_TREE / "scripts/check-layers");
    EXPECT_EQ(run.output, "") << run.errors;
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
}

TEST_F(CheckLayers, RefuseAnIncludeFromALayerThatIsNotNamed) {
    write("src/Second/Second.h", "\n#include \"Top/Top.h\"\n");
    expectRefused("src/Second/Second.h:2: Second may not use Top: layer low may not use layer high\n");
}

TEST_F(CheckLayers, RefuseAnIncludeThatIsRelative) {
    write("src/Second/Second.h", "#include \"../Top/Top.h\"\n");
    expectRefused("src/Second/Second.h:1: Second may not use Top: layer low may not use layer high\n");
}

TEST_F(CheckLayers, RefuseAnIncludeOfAModuleThatComesLaterInTheLayer) {
    write("src/First/First.h", "#include \"Second/Second.h\"\n");
    expectRefused("src/First/First.h:1: First may not use Second: in layer low, it stands after it\n");
}

TEST_F(CheckLayers, RefuseALinkToALayerThatIsNotNamed) {
    write("src/Second/CMakeLists.txt", "dax_module(Second\n           PUBLIC First\n           PRIVATE Top_parts)\n");
    expectRefused("src/Second/CMakeLists.txt:3: Second may not use Top: layer low may not use layer high\n");
}

TEST_F(CheckLayers, RefuseALinkThatIsAddedLater) {
    write("src/First/CMakeLists.txt", "dax_module(First)\ntarget_link_libraries(First PRIVATE Second)\n");
    expectRefused("src/First/CMakeLists.txt:2: First may not use Second: in layer low, it stands after it\n");
}

TEST_F(CheckLayers, RefuseTheInternalsOfAnotherModule) {
    write("src/Top/Top.h", "#include \"First/Implementation/In.h\"\n");
    expectRefused("src/Top/Top.h:1: src/First/Implementation/In.h is internal to First\n");
}

TEST_F(CheckLayers, LetAModulesTestsSeeItsOwnInternalsAlone) {
    write("tests/src/First/FirstTest.cpp", "#include \"First/Implementation/In.h\"\n");
    write("tests/support/Whole.h", "#include \"First/Implementation/In.h\"\n");
    write("tests/src/Top/TopTest.cpp", "#include \"First/Implementation/In.h\"\n");
    expectRefused(
        "tests/src/Top/TopTest.cpp:1: src/First/Implementation/In.h is internal to First, which is not what is "
        "tested here\n");
}

TEST_F(CheckLayers, RefuseAModuleThatStandsInNoLayer) {
    write("src/New/CMakeLists.txt", "dax_module(New)\n");
    write("src/New/New.h", "");
    expectRefused("src/New/New.h:1: belongs to no module of cmake/Layers.txt\n"
                  "src/New/CMakeLists.txt:1: New is no module of cmake/Layers.txt\n");
}

TEST_F(CheckLayers, RefuseAListThatGoesInCirclesOrNamesWhatIsNotThere) {
    write("cmake/Layers.txt", "layer low: what carries\n"
                              "  uses high\n"
                              "  First src/First\n"
                              "layer high: what is carried\n"
                              "  uses low\n"
                              "  Top src/Gone\n");
    expectRefused("cmake/Layers.txt:2: high is no layer above this line\n"
                  "cmake/Layers.txt:6: there is no src/Gone\n");
}

TEST_F(CheckLayers, RefuseAPictureThatTheListDoesNotDraw) {
    write("docs/pictures/layers.svg", m_tree.read("docs/pictures/layers.svg") + " ");
    expectRefused("docs/pictures/layers.svg:1: is not what cmake/Layers.txt draws: run scripts/draw-layers\n");
}

} // namespace
} // namespace DAX::Tests
