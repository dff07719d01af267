#include <cerrno>

#include <boost/exception/enable_current_exception.hpp>
#include <boost/exception/errinfo_nested_exception.hpp>
#include <gtest/gtest.h>

#include "FailingStrerror.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "support/ProcessDeath.h"

using namespace DAX::Common::Utils;

namespace {

TEST(ErrnoTextTest, HasTheNumberAndItsDescription) {
    EXPECT_EQ(get_string_from_errno(ENOENT), " errno=2 (No such file or directory)");
}

TEST(ErrnoTextTest, SaysWhenThereIsNoDescription) {
    EXPECT_IN_CHILD({
        failStrerror();
        EXPECT_EQ(get_string_from_errno(ENOENT), " errno=2 (failed to get error string: )");
    });
}

TEST(ErrnoTextTest, ComesAsATagOfItsOwn) {
    EXPECT_EQ(errinfo_errno(EACCES).value(), " errno=13 (Permission denied)");
}

TEST(ErrinfoStreamTest, WritesItsArgumentsInOrder) {
    EXPECT_EQ(errinfo_stream("a", 1, std::string("b"), 2.5).value(), "a1b2.5");
}

// An exception with this support code, if it is not empty, that wraps `nested`, if there is one.
GenericException wrap(const std::string& supportcode, const boost::exception_ptr& nested = {}) {
    GenericException exception;
    if (!supportcode.empty()) {
        exception << errinfo_supportcode(supportcode);
    }
    if (nested) {
        exception << boost::errinfo_nested_exception(nested);
    }
    return exception;
}

boost::exception_ptr pointerTo(const GenericException& exception) {
    return boost::copy_exception(exception);
}

TEST(CombinedSupportcodeTest, IsEmptyWithoutOne) {
    GenericException exception = wrap("");
    EXPECT_EQ(get_combined_supportcode(exception), "");
}

TEST(CombinedSupportcodeTest, IsTheExceptionsOwn) {
    GenericException exception = wrap("outer");
    EXPECT_EQ(get_combined_supportcode(exception), "outer");
}

TEST(CombinedSupportcodeTest, JoinsAChainFromTheOutsideIn) {
    GenericException exception = wrap("outer", pointerTo(wrap("inner", pointerTo(wrap("innermost")))));
    EXPECT_EQ(get_combined_supportcode(exception), "outer-inner-innermost");
}

TEST(CombinedSupportcodeTest, SkipsTheEmptyOnesOfAChain) {
    GenericException exception = wrap("", pointerTo(wrap("inner", pointerTo(wrap("", pointerTo(wrap("innermost")))))));
    EXPECT_EQ(get_combined_supportcode(exception), "inner-innermost");
}

struct OtherKind {};

TEST(CombinedSupportcodeTest, LetsANestedExceptionOfAnotherKindOut) {
    boost::exception_ptr nested;
    try {
        throw boost::enable_current_exception(OtherKind());
    } catch (...) {
        nested = boost::current_exception();
    }
    GenericException exception = wrap("outer", nested);

    EXPECT_THROW(get_combined_supportcode(exception), OtherKind);
}

} // namespace
