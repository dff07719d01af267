#include "Utility/Utils/getDebugName.h"

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using Common::Utils::getDebugName;
using Common::Utils::IDebugName;

class Plain {
public:
    virtual ~Plain() = default;
};

class Named : public Plain, public IDebugName {
public:
    std::string debugName() const override { return "Named(1)"; }
};

class Unnamed : public Plain {};

TEST(GetDebugName, GivesTheNameOfWhatHasOne) {
    const Named object;
    EXPECT_EQ(getDebugName(object), "Named(1)");
    EXPECT_EQ(getDebugName<Plain>(object), "Named(1)");
}

TEST(GetDebugName, GivesStaticTypeAndAddressOfWhatHasNone) {
    const Unnamed object;
    const Plain& plain = object;
    std::ostringstream address;
    address << &plain; // "0x" and the address in hexadecimal
    EXPECT_EQ(getDebugName(plain), std::string(typeid(Plain).name()) + "=" + address.str());
    EXPECT_EQ(getDebugName(object), std::string(typeid(Unnamed).name()) + "=" + address.str());
}

} // namespace
} // namespace DAX::Tests
