#pragma once

#include <sstream>
#include <string>

#include "Utility/Utils/KeptInterruption.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// The border between an adapter, which takes no exceptions, and the handlers of the methods behind it, which throw.
namespace RequestBoundary {

[[noreturn]] void throwUnknownMethod(const std::string& method);

// Puts the exception being handled in the place of all that `out` holds. Only inside a catch block.
void replaceByException(std::stringstream& out, std::string& exceptionName);

// What a table of methods has for this one. Throws UnknownMethodException when it has nothing.
template <class Table>
const typename Table::mapped_type& find(const Table& table, const std::string& method) {
    const auto entry = table.find(method);
    if (entry == table.end()) {
        throwUnknownMethod(method);
    }
    return entry->second;
}

// Runs `handle`, which writes its result to `out`. False when it threw: `exceptionName` and `out` then hold the
// exception. Nothing is thrown but what keeps an exception from being written; an interruption of the thread is kept.
template <class Handle>
bool answer(std::stringstream& out, std::string& exceptionName, Handle handle) {
    try {
        handle();
        return true;
    } catch (...) {
        Common::Utils::KeptInterruption::keep();
        replaceByException(out, exceptionName);
        return false;
    }
}

} // namespace RequestBoundary
} // namespace DAX::DAXIPC::DBUSLowLevel
