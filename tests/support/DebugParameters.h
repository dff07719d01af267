#pragma once

#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"

namespace DAX {
namespace Tests {

// The debug and test parameters while the object lives: loaded, as at the start of a program, and afterwards as they
// were before it. Loading asks for a path, which stays for the life of the process: a root of the test's own comes
// first. It logs, but once in a process: forget the records behind it.
class DebugParameters {
public:
    DebugParameters() : m_before(loaded()) {}
    ~DebugParameters() { record() = m_before; }
    DebugParameters(const DebugParameters&) = delete;
    DebugParameters& operator=(const DebugParameters&) = delete;

    DAXCommon::DebugAndTestParameters* operator->() { return &record(); }

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

} // namespace Tests
} // namespace DAX
