#include <filesystem>
#include <string>

#include <gmock/gmock.h>

#include "scripts/ScriptTree.h"

namespace DAX::Tests {
namespace {

const char MODULES[] = "function(dax_module target)\n"
                       "  cmake_parse_arguments(ARG \"\" \"\" \"PUBLIC;PRIVATE\" ${ARGN})\n"
                       "  add_library(${target} STATIC ${target}.cpp)\n"
                       "  target_link_libraries(${target} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})\n"
                       "endfunction()\n"
                       "function(dax_program target)\n"
                       "  cmake_parse_arguments(ARG \"\" \"\" \"LINK\" ${ARGN})\n"
                       "  add_executable(${target} main.cpp)\n"
                       "  target_link_libraries(${target} PRIVATE ${ARG_LINK} kovan_platform)\n"
                       "endfunction()\n";

const char ROOT_LIST[] = "cmake_minimum_required(VERSION 3.25)\n"
                         "project(Tree LANGUAGES CXX)\n"
                         "find_package(Boost REQUIRED)\n"
                         "include(cmake/Modules.cmake)\n"
                         "file(GLOB lists src/*/CMakeLists.txt)\n"
                         "foreach(list IN LISTS lists)\n"
                         "  cmake_path(GET list PARENT_PATH folder)\n"
                         "  add_subdirectory(${folder})\n"
                         "endforeach()\n";

const char SECOND_USES_TOP[] = "Second may not use Top: layer low may not use layer high\n";

// A tree of three modules in two layers, with its own list and picture. It keeps to the list.
class CheckLayers : public ScriptTree {
protected:
    CheckLayers() : ScriptTree({"check-layers", "draw-layers", "layers.py", "links.py"}) {
        std::filesystem::create_directories(m_tree / "cmake");
        std::filesystem::copy(SOURCE_TREE / "cmake/links", m_tree / "cmake/links",
                              std::filesystem::copy_options::recursive);
        write("cmake/Layers.txt", "layer low: what carries\n"
                                  "  First src/First\n"
                                  "  Second src/Second\n"
                                  "layer high: what is carried\n"
                                  "  uses low\n"
                                  "  Top src/Top\n");
        write("cmake/Modules.cmake", MODULES);
        write("CMakeLists.txt", ROOT_LIST);
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
        EXPECT_EQ(runScript("draw-layers").end, ProcessEnd::exited(0));
    }

    void expectRefused(const std::string& complaints) const {
        const FinishedRun run = runScript("check-layers");
        EXPECT_EQ(run.output, complaints) << run.errors;
        EXPECT_EQ(run.end, ProcessEnd::exited(1));
    }

    // The line is that of the first of the words that the check looks for.
    void expectRefusedAtAnyLine(const std::string& link) const {
        const FinishedRun run = runScript("check-layers");
        EXPECT_THAT(run.output,
                    testing::MatchesRegex(std::string("src/Second/CMakeLists.txt:[12]: ") + SECOND_USES_TOP))
            << link << run.errors;
        EXPECT_EQ(run.end, ProcessEnd::exited(1)) << link;
    }
};

TEST_F(CheckLayers, PassesATreeThatKeepsToItsList) {
    const FinishedRun run = runScript("check-layers");
    EXPECT_EQ(run.output, "") << run.errors;
    EXPECT_EQ(run.end, ProcessEnd::exited(0));
}

TEST(CheckLayersOfThisTree, Pass) {
    const FinishedRun run = runOnThisTree("check-layers");
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

TEST_F(CheckLayers, RefuseALinkHiddenInAGeneratorExpression) {
    write("src/Second/CMakeLists.txt", "dax_module(Second\n"
                                       "           PRIVATE $<$<CONFIG:Release>:Top>)\n");
    expectRefused(std::string("src/Second/CMakeLists.txt:2: ") + SECOND_USES_TOP);
}

TEST_F(CheckLayers, RefuseALinkHiddenInAVariable) {
    write("src/Second/CMakeLists.txt", "set(hidden Top)\ndax_module(Second PRIVATE ${hidden})\n");
    expectRefused(std::string("src/Second/CMakeLists.txt:1: ") + SECOND_USES_TOP);
}

TEST_F(CheckLayers, RefuseALinkThatAFunctionOfTheBuildAdds) {
    write("cmake/Modules.cmake", std::string(MODULES) + "function(help target)\n"
                                                        "  target_link_libraries(${target} PRIVATE Top)\n"
                                                        "endfunction()\n");
    write("src/Second/CMakeLists.txt", "\ndax_module(Second)\nhelp(Second)\n");
    expectRefused(std::string("src/Second/CMakeLists.txt:2: ") + SECOND_USES_TOP);
}

TEST_F(CheckLayers, RefuseALinkWhateverTheCaseOfTheCommand) {
    write("src/Second/CMakeLists.txt", "dax_module(Second)\nTarget_Link_Libraries(Second PRIVATE Top)\n");
    expectRefused(std::string("src/Second/CMakeLists.txt:2: ") + SECOND_USES_TOP);
}

TEST_F(CheckLayers, RefuseALinkThatIsSetAsAProperty) {
    write("src/Second/CMakeLists.txt",
          "dax_module(Second)\nset_target_properties(Second PROPERTIES INTERFACE_LINK_LIBRARIES Top)\n");
    expectRefused(std::string("src/Second/CMakeLists.txt:2: ") + SECOND_USES_TOP);
}

TEST_F(CheckLayers, RefuseALinkByAnotherNameOfTheTargetOrByItsFile) {
    write("src/Top/CMakeLists.txt", "dax_module(Top)\nadd_library(Innocent ALIAS Top)\n");
    write("src/Second/CMakeLists.txt", "dax_module(Second PRIVATE Innocent)\n");
    expectRefused(std::string("src/Second/CMakeLists.txt:1: ") + SECOND_USES_TOP);
    for (const char* const link : {"-lTop", "${CMAKE_BINARY_DIR}/src/Top/libTop.a", "$<TARGET_FILE:Top>"}) {
        write("src/Second/CMakeLists.txt", std::string("dax_module(Second PRIVATE ") + link + ")\n");
        expectRefused(std::string("src/Second/CMakeLists.txt:1: ") + SECOND_USES_TOP);
    }
}

TEST_F(CheckLayers, RefuseALinkOfABuildForADeviceAlone) {
    write("src/Second/CMakeLists.txt", "dax_module(Second)\n"
                                       "if(KOVAN_PLATFORM STREQUAL device)\n"
                                       "  target_link_libraries(Second PRIVATE Top)\n"
                                       "endif()\n");
    expectRefused(std::string("src/Second/CMakeLists.txt:3: ") + SECOND_USES_TOP);
}

TEST_F(CheckLayers, RefuseATargetOfNoModuleBetweenTwoModules) {
    write("cmake/Modules.cmake",
          std::string(MODULES) + "add_library(between INTERFACE)\ntarget_link_libraries(between INTERFACE Top)\n");
    write("src/Second/CMakeLists.txt", "dax_module(Second PRIVATE between)\n");
    expectRefused("src/Second/CMakeLists.txt:1: between is no module of cmake/Layers.txt\n");
}

TEST_F(CheckLayers, RefuseALinkWhoseTextDoesNotShowItsTarget) {
    for (const char* const link : {"$<TARGET_PROPERTY:First,LINKS>", "$<1:T>op", "$<LOWER_CASE:TOP>"}) {
        write("src/Second/CMakeLists.txt", std::string("dax_module(Second PRIVATE ") + link + ")\n");
        expectRefused(
            "src/Second/CMakeLists.txt:1: Second has a link that this check cannot read: " + std::string(link) + "\n");
    }
}

TEST_F(CheckLayers, TakeNoValueOfALinkersOptionForALink) {
    for (const char* const option :
         {"-Wl,-rpath,/opt/Top", "-Wl,-rpath,Top", "LINKER:-rpath,/opt/Top", "-L/opt/Top", "-Top", "/opt/Top",
          "$<$<VERSION_GREATER:$<CXX_COMPILER_VERSION>,11>:-Wl,-z,now>"}) {
        write("src/Second/CMakeLists.txt", std::string("dax_module(Second)\ntarget_link_options(Second PRIVATE ") +
                                               option + ")\ntarget_link_libraries(Second PRIVATE " + option + ")\n");
        const FinishedRun run = runScript("check-layers");
        EXPECT_EQ(run.output, "") << option << run.errors;
        EXPECT_EQ(run.end, ProcessEnd::exited(0)) << option;
    }
}

TEST_F(CheckLayers, RefuseALibraryAmongTheOptionsOfTheLinker) {
    for (const char* const option :
         {"-lTop", "-Wl,-lTop", "-Wl,--whole-archive,/opt/libTop.a", "LINKER:--library=Top", "$<$<CONFIG:Debug>:-lTop>",
          "$<$<VERSION_GREATER:$<CXX_COMPILER_VERSION>,11>:-lTop>", "$<IF:$<CONFIG:Debug>,-g,Top>"}) {
        write("src/Second/CMakeLists.txt",
              std::string("dax_module(Second)\ntarget_link_options(Second PRIVATE ") + option + ")\n");
        expectRefusedAtAnyLine(option);
    }
}

TEST_F(CheckLayers, RefuseALinkInABranchThatIsNotTaken) {
    for (const char* const condition :
         {"SANITIZE", "CMAKE_BUILD_TYPE STREQUAL Release", "Boost_FOUND", "TARGET Boost::filesystem"}) {
        write("src/Second/CMakeLists.txt", std::string("dax_module(Second)\nif(") + condition +
                                               ")\n  target_link_libraries(Second PRIVATE Top)\nendif()\n");
        expectRefused(std::string("src/Second/CMakeLists.txt:3: ") + SECOND_USES_TOP);
    }
}

TEST_F(CheckLayers, RefuseATargetOfNoModuleInABranchThatIsNotTaken) {
    write("src/Second/CMakeLists.txt",
          "dax_module(Second)\nif(SANITIZE)\n  add_library(Stranger STATIC Stranger.cpp)\nendif()\n");
    expectRefused("src/Second/CMakeLists.txt:3: Stranger is no module of cmake/Layers.txt\n");
}

TEST_F(CheckLayers, RefuseWhatOtherPropertiesAndSourcesBring) {
    write("src/Top/Top.cpp", "");
    for (const char* const line :
         {"set_target_properties(Second PROPERTIES LINK_FLAGS -lTop)",
          "set_target_properties(Second PROPERTIES INTERFACE_LINK_LIBRARIES_DIRECT Top)",
          "target_sources(Second PRIVATE $<TARGET_OBJECTS:Top>)", "target_sources(Second PRIVATE ../Top/Top.cpp)"}) {
        write("src/Second/CMakeLists.txt", std::string("dax_module(Second)\n") + line + "\n");
        expectRefusedAtAnyLine(line);
    }
}

TEST_F(CheckLayers, RefuseAnImportedLibraryThatIsAModulesFile) {
    write("src/Second/CMakeLists.txt", "dax_module(Second PRIVATE other)\nadd_library(other STATIC IMPORTED)\n"
                                       "set_target_properties(other PROPERTIES IMPORTED_LOCATION /opt/libTop.a)\n");
    expectRefusedAtAnyLine("other");
}

TEST_F(CheckLayers, RefuseALinkToATestsTargetOrToNoTarget) {
    write("tests/CMakeLists.txt", "add_library(FakeDevice STATIC FakeDevice.cpp)\n");
    for (const std::string name : {"FakeDevice", "Frist"}) {
        for (const std::string& link : {name, "$<$<CONFIG:Debug>:" + name + ">",
                                        "$<IF:$<CONFIG:Debug>,First," + name + ">", "$<LINK_ONLY:" + name + ">"}) {
            write("src/Second/CMakeLists.txt", "dax_module(Second PUBLIC First PRIVATE " + link + ")\n");
            expectRefused("src/Second/CMakeLists.txt:1: " + name + " is no module of cmake/Layers.txt\n");
        }
        write("src/Second/CMakeLists.txt",
              "dax_module(Second)\nif(SANITIZE)\n  target_link_libraries(Second PRIVATE First " + name +
                  ")\nendif()\n");
        expectRefused("src/Second/CMakeLists.txt:3: " + name + " is no module of cmake/Layers.txt\n");
    }
}

TEST_F(CheckLayers, RefuseALinkThatAListOfAnotherFolderAdds) {
    write("src/Second/CMakeLists.txt", "dax_module(Second)\n");
    for (const std::string list : {"tests/CMakeLists.txt", "fuzz/CMakeLists.txt", "benchmarks/streams/CMakeLists.txt",
                                   "packaging/CMakeLists.txt", "examples/CMakeLists.txt"}) {
        write(list, "add_library(FakeDevice STATIC FakeDevice.cpp)\ntarget_link_libraries(FakeDevice PUBLIC Top)\n"
                    "target_link_libraries(Second PRIVATE FakeDevice)\ntarget_link_libraries(Second PRIVATE Top)\n");
        expectRefused(list + ":3: FakeDevice is no module of cmake/Layers.txt\n" + list + ":4: " + SECOND_USES_TOP);
        std::filesystem::remove(m_tree / list);
    }
}

TEST_F(CheckLayers, AcceptALibraryOfOthers) {
    for (const char* const link : {"Boost::thread", "-lrt", "/usr/lib/libother.so", "$<LINK_ONLY:Boost::thread>",
                                   "$<$<AND:$<CONFIG:Debug>,$<PLATFORM_ID:Linux>>:-lrt>", "${OTHERS_LIBRARIES}"}) {
        write("src/Second/CMakeLists.txt",
              std::string("dax_module(Second)\ntarget_link_libraries(Second PRIVATE First ") + link + ")\n");
        const FinishedRun run = runScript("check-layers");
        EXPECT_EQ(run.output, "") << link << run.errors;
        EXPECT_EQ(run.end, ProcessEnd::exited(0)) << link;
    }
}

TEST_F(CheckLayers, RefuseAModuleOfTheListThatCMakeDoesNotHave) {
    write("cmake/Layers.txt", m_tree.read("cmake/Layers.txt") + "  Ghost\n");
    EXPECT_EQ(runScript("draw-layers").end, ProcessEnd::exited(0));
    expectRefused("cmake/Layers.txt:7: Ghost is no target of CMake's\n");
}

TEST_F(CheckLayers, FailOnATreeThatCMakeCannotRead) {
    write("src/Second/CMakeLists.txt", "no_such_command(Second)\n");
    const FinishedRun run = runScript("check-layers");
    EXPECT_THAT(run.errors, testing::StartsWith("CMake cannot read the tree for the platform host:\n"));
    EXPECT_THAT(run.errors, testing::HasSubstr("Unknown CMake command \"no_such_command\""));
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
}

TEST_F(CheckLayers, FailOnAnErrorAfterWhichCMakeGoesOn) {
    for (const char* const line : {"include(Missing.cmake)", "add_subdirectory(missing)", "message(SEND_ERROR x)"}) {
        write("src/Second/CMakeLists.txt", std::string("dax_module(Second)\n") + line + "\n");
        const FinishedRun run = runScript("check-layers");
        EXPECT_THAT(run.errors, testing::StartsWith("CMake cannot read the tree for the platform host:\n")) << line;
        EXPECT_THAT(run.errors, testing::HasSubstr("src/Second/CMakeLists.txt:2")) << line;
        EXPECT_EQ(run.end, ProcessEnd::exited(1)) << line;
    }
}

TEST_F(CheckLayers, AskNoCompiler) {
    write("cmake/Modules.cmake", std::string(MODULES) + "include(CheckCXXCompilerFlag)\n"
                                                        "check_cxx_compiler_flag(-fcf-protection HAS_FLAG)\n"
                                                        "include(CheckCXXSourceCompiles)\n"
                                                        "check_cxx_source_compiles(\"int main() {}\" CAN_COMPILE)\n"
                                                        "message(FATAL_ERROR \"[${HAS_FLAG}${CAN_COMPILE}]\")\n");
    const FinishedRun run = runScript("check-layers");
    EXPECT_THAT(run.errors, testing::HasSubstr("[]"));
    EXPECT_THAT(run.errors, testing::Not(testing::HasSubstr("needs to be enabled before use")));
}

TEST_F(CheckLayers, NeedNoBuildToolAndNoSettingOfCMakes) {
    const std::filesystem::path programs = folderWithInterpreter(m_tree / "programs");
    std::filesystem::create_symlink(printedBy("command -v cmake"), programs / "cmake");
    const FinishedRun run = runScript("check-layers", {{"PATH", programs.string()},
                                                       {"CMAKE_GENERATOR", "No Such Generator"},
                                                       {"CMAKE_GENERATOR_TOOLSET", "none"},
                                                       {"CMAKE_TOOLCHAIN_FILE", "/missing"}});
    EXPECT_EQ(run.output, "") << run.errors;
    EXPECT_EQ(run.end, ProcessEnd::exited(0)) << run.errors;
}

TEST_F(CheckLayers, SayThatTheyNeedCMake) {
    const std::filesystem::path programs = folderWithInterpreter(m_tree / "programs");
    const FinishedRun run = runScript("check-layers", {{"PATH", programs.string()}});
    EXPECT_EQ(run.errors, "scripts/check-layers needs cmake 3.25 or newer\n");
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
}

TEST_F(CheckLayers, RefuseAnIncludeOfAFileOfOursThatOnlyAnotherFolderForIncludesHas) {
    write("src/Top/Inner/Deep.h", "");
    for (const std::string name : {"Top.h", "Inner/Deep.h", "Deep.h", "../none/Deep.h"}) {
        write("src/Second/Second.h", "#include <" + name + ">\n");
        if (name == "../none/Deep.h") {
            EXPECT_EQ(runScript("check-layers").output, "");
            continue;
        }
        expectRefused("src/Second/Second.h:1: no folder for includes that this check knows has " + name + "\n");
    }
}

TEST_F(CheckLayers, RefuseAnIncludeThatTheyCannotRead) {
    for (const char* const include :
         {"#include TOP", "#include /* x */ \"Top/Top.h\"", "/**/ # include_next <Top/Top.h>",
          "%:include \"Top/Top.h\"", "#import \"Top/Top.h\""}) {
        write("src/Second/Second.h", std::string("\n") + include + "\n");
        expectRefused("src/Second/Second.h:2: an #include that this check cannot read\n");
    }
    write("src/Second/Second.h",
          "#if __has_include(<vector>)\n#error include First.h\n#define INCLUDE include\n#endif\n");
    EXPECT_EQ(runScript("check-layers").output, "");
}

TEST_F(CheckLayers, RefuseASourceThatTheyDoNotRead) {
    for (const std::string file : {"Second.hpp", "Second.inc", "Implementation/Second.cc", "Implementation/Second.c",
                                   "Second.ipp", "Second.inc.in"}) {
        write("src/Second/" + file, "#include \"Top/Top.h\"\n");
        expectRefused("src/Second/" + file + ":1: this check reads .h and .cpp alone\n");
        std::filesystem::remove(m_tree / "src/Second" / file);
    }
    write("src/Second/Version.h.in", "#include \"Top/Top.h\"\n");
    expectRefused(std::string("src/Second/Version.h.in:1: ") + SECOND_USES_TOP);
}

TEST_F(CheckLayers, RefuseAHeaderOfOursThatIsIncludedByEverySource) {
    write("src/Second/CMakeLists.txt", "dax_module(Second)\ntarget_compile_options(Second PRIVATE -include ${file})\n");
    expectRefused("src/Second/CMakeLists.txt:2: an option that includes a file\n");
    write("src/Second/CMakeLists.txt", "dax_module(Second)\n");

    write("cmake/Headers.cpp", "#include \"Top/Top.h\"\n");
    expectRefused("cmake/Headers.cpp:1: src/Top/Top.h would be included by every source\n");
    std::filesystem::remove(m_tree / "cmake/Headers.cpp");

    for (const char* const header : {"<Top/Top.h>", "\"Top/Top.h\"", "${PROJECT_SOURCE_DIR}/src/Top/Top.h"}) {
        write("cmake/Headers.cmake",
              std::string("# <Top/Top.h>\ntarget_precompile_headers(First PRIVATE <list>\n  ") + header + ")\n");
        expectRefused("cmake/Headers.cmake:2: src/Top/Top.h would be included by every source\n");
    }
}

TEST_F(CheckLayers, LetAnExampleIncludeWhatIsInstalledAlone) {
    write("cmake/Layers.txt", m_tree.read("cmake/Layers.txt") + "  client clients/libdaxclient\n");
    write("clients/libdaxclient/include/dax/client.h", "");
    write("clients/libdaxclient/CMakeLists.txt", "dax_module(client)\n");
    write("CMakeLists.txt", std::string(ROOT_LIST) + "add_subdirectory(clients/libdaxclient)\n");
    EXPECT_EQ(runScript("draw-layers").end, ProcessEnd::exited(0));
    write("examples/lock.cpp", "#include <dax/client.h>\n#include \"First/First.h\"\n");
    expectRefused("examples/lock.cpp:2: src/First/First.h is not installed\n");
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

TEST_F(CheckLayers, RefuseAListThatTheyCannotRead) {
    write("cmake/Layers.txt", "  First src/First\n  uses low\nlayer\nlayer low: what carries\n  First src/First\n");
    expectRefused("cmake/Layers.txt:1: First stands below no layer\n"
                  "cmake/Layers.txt:2: uses stands below no layer\n"
                  "cmake/Layers.txt:3: a layer without a name\n");
}

TEST_F(CheckLayers, RefuseASourceThatIsNotUtf8) {
    write("src/Second/Second.h", "// \xff\n");
    const FinishedRun run = runScript("check-layers");
    EXPECT_EQ(run.errors, "src/Second/Second.h: is not UTF-8\n");
    EXPECT_EQ(run.end, ProcessEnd::exited(1));
}

TEST_F(CheckLayers, RefuseAMissingPicture) {
    std::filesystem::remove(m_tree / "docs/pictures/layers.svg");
    const FinishedRun run = runScript("check-layers");
    EXPECT_EQ(run.output, "docs/pictures/layers.svg:1: is not what cmake/Layers.txt draws: run scripts/draw-layers\n");
    EXPECT_EQ(run.errors, "");
}

TEST_F(CheckLayers, DrawNoPictureForAnOptionThatThereIsNot) {
    write("docs/pictures/layers.svg", "mine");
    for (const char* const option : {"--help", "--chek"}) {
        const FinishedRun run = runScript("draw-layers", {}, {option});
        EXPECT_EQ(run.errors, "usage: scripts/draw-layers [--check]\n") << option;
        EXPECT_EQ(run.end, ProcessEnd::exited(2)) << option;
    }
    EXPECT_EQ(m_tree.read("docs/pictures/layers.svg"), "mine");
}

TEST_F(CheckLayers, RefuseAPictureThatTheListDoesNotDraw) {
    write("docs/pictures/layers.svg", m_tree.read("docs/pictures/layers.svg") + " ");
    expectRefused("docs/pictures/layers.svg:1: is not what cmake/Layers.txt draws: run scripts/draw-layers\n");
}

} // namespace
} // namespace DAX::Tests
