// Takes any bytes as the debug file. It is read or refused as bad, and nothing else happens. What was read can be
// written and is read back unchanged, except for texts with characters that no file can hold.
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "support/TemporaryRoot.h"

namespace {

using DAX::DAXCommon::DebugAndTestParameters;

const char FILE_NAME[] = "mnt/systemrw/org.kovan.tv.dax/data/tv/DebugAndTestParameters.xml";

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

std::string savedText(const DebugAndTestParameters& parameters, const DAX::Tests::TemporaryRoot& root) {
    require(parameters.save(), "it cannot be saved");
    return root.read(FILE_NAME);
}

// Custom parameters that are numbers are parsed only when they are asked for.
void askForNumbers(const DebugAndTestParameters& parameters) {
    for (const char* name : {"testParam0", "testParam1", "number", "seven", "proxy", ""}) {
        const boost::optional<int> number = parameters.getCustomIntParam(name);
        require(!number || parameters.getCustomBoolParam(name, *number == 0) == (*number != 0), "another flag");
        require(!number || parameters.getCustomStringParam(name), "a number without a text");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("KOVAN_DLOG", "none", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const DAX::Tests::TemporaryRoot root;
    root.write(FILE_NAME, std::string(data, data + size));
    DebugAndTestParameters parameters;
    parameters.load();
    askForNumbers(parameters);
    const std::string text = savedText(parameters, root);
    DebugAndTestParameters again;
    if (again.load()) {
        require(savedText(again, root) == text, "it does not read as itself");
    }
    return 0;
}
