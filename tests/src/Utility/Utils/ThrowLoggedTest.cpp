#include "Utility/Utils/ThrowLogged.h"

#include <gmock/gmock.h>

#include "Utility/Utils/GenericException.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

namespace DAX::Tests {
namespace {

using Common::Utils::errinfo_description;
using Common::Utils::errinfo_path;
using Common::Utils::errinfo_stream_text;
using Common::Utils::GenericException;
using Common::Utils::throwLogged;

TEST(ThrowLogged, LogsAndThrowsTheSameText) {
    const auto describe = [] { throwLogged<errinfo_description>(GenericException(), "bad", BOOST_CURRENT_LOCATION); };
    const auto stream = [] { throwLogged(GenericException(), "worse", BOOST_CURRENT_LOCATION); };
    EXPECT_EQ(thrownText<errinfo_description>(describe), "bad");
    EXPECT_EQ(thrownText<errinfo_stream_text>(stream), "worse");
    EXPECT_THAT(FakeKovan::messages(), testing::ElementsAre("bad", "worse"));
    EXPECT_THAT(FakeKovan::messages("ERR"), testing::ElementsAre("bad", "worse"));
}

TEST(ThrowLogged, NamesTheSiteInBoth) {
    const int line = __LINE__ + 1;
    const auto fail = [] { throwLogged<errinfo_description>(GenericException(), "bad", BOOST_CURRENT_LOCATION); };
    const ThrowSite site = siteThrownBy(fail);
    EXPECT_EQ(site.file, __FILE__);
    EXPECT_EQ(site.line, line);
    ASSERT_EQ(FakeKovan::logLines().size(), 1U);
    EXPECT_EQ(FakeKovan::logLines()[0].file, "ThrowLoggedTest.cpp");
    EXPECT_EQ(FakeKovan::logLines()[0].line, line);
}

TEST(ThrowLogged, KeepsWhatTheExceptionCarries) {
    const auto fail = [] {
        throwLogged<errinfo_description>(GenericException() << errinfo_path("/a/path"), "bad", BOOST_CURRENT_LOCATION);
    };
    try {
        fail();
        FAIL() << "nothing was thrown";
    } catch (const GenericException& exception) {
        EXPECT_EQ(*boost::get_error_info<errinfo_path>(exception), boost::filesystem::path("/a/path"));
    }
}

} // namespace
} // namespace DAX::Tests
