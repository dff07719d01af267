#include "daxctl/MethodOption.h"

#include <gtest/gtest.h>

#include "clients_common/CommandLine.h"

namespace DAX::Tests {
namespace {

using DAX::DAXIPC::DBUSLowLevel::Side;

std::string complaintAboutMethod(Side side, const std::string& name) {
    try {
        return daxctl::methodNamed(side, name).name + " is there";
    } catch (const clients_common::WrongUsage& error) {
        return error.what();
    }
}

TEST(MethodOption, IsAMethodOfItsSide) {
    EXPECT_EQ(complaintAboutMethod(Side::SERVICE, "getService"), "getService is there");
    EXPECT_EQ(complaintAboutMethod(Side::CORE, "getService"),
              "The core has no method getService, but the service has: leave --core out.");
}

TEST(MethodOption, IsProposedWhenItIsNear) {
    EXPECT_EQ(complaintAboutMethod(Side::SERVICE, "startsearching"),
              "The service has no method startsearching. Did you mean startSearching?");
    EXPECT_EQ(complaintAboutMethod(Side::CORE, "cancelTransaction"),
              "The core has no method cancelTransaction. Did you mean cancelCoreTransaction?");
    EXPECT_EQ(complaintAboutMethod(Side::SERVICE, "xyz"), "The service has no method xyz.");
}

} // namespace
} // namespace DAX::Tests
