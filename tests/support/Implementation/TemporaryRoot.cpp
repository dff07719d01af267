#include "support/TemporaryRoot.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

namespace DAX::Tests {

namespace {

const char* const ROOT_VARIABLE = "KOVAN_ROOT";

std::filesystem::path makeFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "kovan-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    return name;
}

std::filesystem::path makeSameFolder() {
    static const std::filesystem::path folder = makeFolder();
    std::filesystem::create_directory(folder);
    return folder;
}

} // namespace

TemporaryRoot::TemporaryRoot() : TemporaryRoot(makeFolder()) {}

TemporaryRoot::TemporaryRoot(SameForAll) : TemporaryRoot(makeSameFolder()) {}

TemporaryRoot::TemporaryRoot(std::filesystem::path path) : m_path(std::move(path)) {
    if (const char* previous = std::getenv(ROOT_VARIABLE)) {
        m_previousRoot = previous;
    }
    setenv(ROOT_VARIABLE, m_path.c_str(), 1);
}

TemporaryRoot::~TemporaryRoot() {
    setenv(ROOT_VARIABLE, m_previousRoot.c_str(), 1);
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void TemporaryRoot::write(const std::string& relative, const std::string& text) const {
    const std::filesystem::path file = m_path / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

std::string TemporaryRoot::read(const std::string& relative) const {
    std::ostringstream text;
    text << std::ifstream(m_path / relative, std::ios::binary).rdbuf();
    return text.str();
}

} // namespace DAX::Tests
