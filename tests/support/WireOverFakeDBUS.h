#pragma once

#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include "support/FakeDBUSProxy.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {

// A fake bus whose messages are compared with the golden files of one side, "core" or "service".
class WireOverFakeDBUS {
public:
    explicit WireOverFakeDBUS(std::string side) : m_side(std::move(side)) {}

    // Makes the far side answer `method` with the bytes of the file, and checks that these are the values in it.
    template <class... Values>
    void reply(const std::string& method, const Values&... values) {
        const std::string bytes = golden(m_side + "/" + method + ".reply");
        EXPECT_EQ(encode(values...), bytes) << method;
        bus.reply(method, bytes);
    }

    // Makes the far side answer `method` without a value.
    void replyNothing(const std::string& method) {
        EXPECT_EQ(golden(m_side + "/" + method + ".reply"), "") << method;
        bus.reply(method);
    }

    // Checks that the last request of `method` is equal to the file, and that the file is these values.
    template <class... Values>
    void expectRequest(const std::string& method, const Values&... values) const {
        EXPECT_EQ(bus.parameters(method), golden(m_side + "/" + method + ".request")) << method;
        EXPECT_TRUE(std::make_tuple(values...) == decode<Values...>(bus.parameters(method))) << method;
    }

    FakeDBUS bus;

private:
    const std::string m_side;
};

} // namespace DAX::Tests
