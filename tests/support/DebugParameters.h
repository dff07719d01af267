#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>

#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "support/DebugFile.h"

namespace DAX::Tests {

// Loads the debug and test parameters, as at the start of a program, for as long as the object lives; the destructor
// restores them. Loading asks for a path, which stays for the life of the process, so make a root of the test's own
// first. It also logs once in a process, so empty the journal afterwards.
class DebugParameters {
public:
    DebugParameters() : m_before(loaded()) {}
    ~DebugParameters() { record() = m_before; }
    DebugParameters(const DebugParameters&) = delete;
    DebugParameters& operator=(const DebugParameters&) = delete;

    DAXCommon::DebugAndTestParameters* operator->() { return &record(); }

    // Writes a debug file with the defaults and these values, and has it read.
    void read(const std::map<std::string, std::string>& values) {
        const std::string path = Record::getConfigFilePath();
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path) << debugFile(values);
        if (!Record::reload()) {
            throw std::logic_error("the debug file cannot be read");
        }
    }

private:
    using Record = DAXCommon::DebugAndTestParameters;

    static Record& record() { return Record::getDebugAndTestParameters(); }
    static Record& loaded() {
        if (!Record::loaded()) {
            Record::loadDebugAndTestParameters();
        }
        return record();
    }

    const Record m_before;
};

} // namespace DAX::Tests
