#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>

namespace DAX::Tests {

// A file of tests/golden/debug, where the debug files are in their unchanging form: defaults.xml is the file of a
// device that has changed nothing, changed.xml has another value in every element, version0.xml has the first class
// version.
inline std::string goldenDebugFile(const std::string& name) {
    const auto path = std::filesystem::path(__FILE__).parent_path() / "../golden/debug" / name;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("no golden file " + name);
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// A debug file with the defaults, except for these elements, which hold one value each.
inline std::string debugFile(const std::map<std::string, std::string>& values) {
    std::string text = goldenDebugFile("defaults.xml");
    for (const auto& value : values) {
        const std::string tag = "<" + value.first + ">";
        const std::size_t begin = text.find(tag) + tag.size();
        const std::size_t end = text.find("</" + value.first + ">", begin);
        if (end == std::string::npos) {
            throw std::runtime_error("no element " + value.first);
        }
        text.replace(begin, end - begin, value.second);
    }
    return text;
}

} // namespace DAX::Tests
