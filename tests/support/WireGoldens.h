#pragma once

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>

#include <boost/archive/text_oarchive.hpp>
#include <gtest/gtest.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"

// The bytes that cross the bus, as files under tests/golden/wire, one for each archive:
//   service/<method>.request, .reply   the methods of the service manager, a session and a transaction
//   core/<method>.request, .reply      the methods of the update core
//   records/<record>                   each record alone
//   exceptions/<name>                  the third array of an exception reply
// An empty file stands for no archive. A request is sent while its archive is still open, and so has no line end. All
// others end with the line end by which the library closes an archive.
namespace DAX::Tests {

inline std::string golden(const std::string& name) {
    static const std::string header = __FILE__; // tests/support/WireGoldens.h
    static const std::string tests = header.substr(0, header.rfind("support/"));
    std::ifstream file(tests + "golden/wire/" + name, std::ios::binary);
    if (!file) {
        throw std::runtime_error("no golden file " + name);
    }
    std::ostringstream bytes;
    if (file.peek() != std::ifstream::traits_type::eof()) {
        bytes << file.rdbuf();
    }
    return bytes.str();
}

// A finished archive of the values, in order.
template <class... Values>
std::string encode(const Values&... values) {
    std::ostringstream bytes;
    {
        boost::archive::text_oarchive archive(bytes);
        ((archive << values), ...);
    }
    return bytes.str();
}

// The values of an archive, in order.
template <class... Values>
std::tuple<Values...> decode(const std::string& bytes) {
    std::istringstream stream(bytes);
    DAXIPC::DBUSLowLevel::ArchiveInput archive(stream);
    std::tuple<Values...> values{};
    std::apply([&]([[maybe_unused]] Values&... value) { ((archive >> value), ...); }, values);
    return values;
}

// Checks that an archive with only this value is equal to the file, and that the file is read as the value.
template <class Value>
void expectGolden(const std::string& name, const Value& value) {
    EXPECT_EQ(encode(value), golden(name));
    EXPECT_TRUE(value == std::get<0>(decode<Value>(golden(name))));
}

} // namespace DAX::Tests
