#include "Utility/Utils/InnermostText.h"

#include <boost/exception/diagnostic_information.hpp>
#include <gtest/gtest.h>

#include "Utility/Utils/ErrorTags.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Tests {
namespace {

using Common::Utils::GenericException;
using Common::Utils::get_innermost_text;

TEST(InnermostText, IsWhatAnExceptionCarries) {
    const auto textOf = [](const auto& tag) {
        return get_innermost_text(boost::diagnostic_information(GenericException() << tag));
    };
    EXPECT_EQ(textOf(Common::Utils::errinfo_stream("It is ", "broken.")), "It is broken.");
    EXPECT_EQ(textOf(Common::Utils::errinfo_description("It is broken.")), "It is broken.");
    EXPECT_EQ(textOf(Common::Utils::errinfo_path("/etc")), "");
}

TEST(InnermostText, IsTheFreeTextOfTheThrowSite) {
    EXPECT_EQ(get_innermost_text("[DAX::Common::Utils::tag_errinfo_stream*] = It is broken.\nmore"), "It is broken.");
}

TEST(InnermostText, IsTheDescriptionOfTheThrowSite) {
    EXPECT_EQ(get_innermost_text("[DAX::Common::Utils::tag_errinfo_description*] = It is broken.\nmore"),
              "It is broken.");
}

TEST(InnermostText, IsTheLastOfTheChain) {
    const std::string stream = "[tag_errinfo_stream*] = streamed\n";
    const std::string description = "[tag_errinfo_description*] = described\n";
    EXPECT_EQ(get_innermost_text(stream + description), "described");
    EXPECT_EQ(get_innermost_text(description + stream), "streamed");
    EXPECT_EQ(get_innermost_text("[tag_errinfo_stream*] = outer\n" + stream), "streamed");
}

TEST(InnermostText, EndsWithTheDiagnostic) {
    EXPECT_EQ(get_innermost_text("[tag_errinfo_stream*] = It is broken."), "It is broken.");
}

TEST(InnermostText, IsEmptyWhenThereIsNone) {
    EXPECT_EQ(get_innermost_text("[tag_errinfo_path*] = /etc\n"), "");
    EXPECT_EQ(get_innermost_text(""), "");
}

} // namespace
} // namespace DAX::Tests
