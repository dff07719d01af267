#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"

#include <stdexcept>
#include <string>

#include <boost/core/demangle.hpp>
#include <boost/exception/all.hpp>
#include <boost/serialization/string.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "support/FakeKovan.h"
#include "support/ProcessDeath.h"
#include "support/Thrown.h"
#include "support/WireGoldens.h"

using namespace DAX::Tests;
using namespace DAX::UserInterestExceptions;
using DAX::Common::DBUSWrapper::DBUSWrapperExceptions::UnknownMethodException;
using DAX::Common::Utils::errinfo_string;
using DAX::Common::Utils::errinfo_supportcode;
using DAX::DAXIPC::DBUSLowLevel::StandardExceptionHandler;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct Wrapped {
    std::string name;
    std::string archive;
    std::string supportCode() const { return std::get<0>(decode<std::string, std::string>(archive)); }
    std::string diagnostic() const { return std::get<1>(decode<std::string, std::string>(archive)); }
};

// What is sent over the bus when `statement` throws.
template <class Statement>
Wrapped wrap(const Statement& statement) {
    std::stringstream archive;
    Wrapped wrapped;
    try {
        statement();
    } catch (...) {
        StandardExceptionHandler::wrapException(boost::current_exception(), wrapped.name, archive);
    }
    wrapped.archive = archive.str();
    return wrapped;
}

template <class E>
Wrapped wrapThrown(const E& exception) {
    return wrap([&] { throw boost::enable_current_exception(exception); });
}

void unwrap(const Wrapped& wrapped, const std::string& method = "getSearchResult") {
    std::stringstream archive(wrapped.archive);
    StandardExceptionHandler::unwrapException(method, wrapped.name, archive);
}

std::string exceptionArchive(const std::string& supportCode, const std::string& diagnostic) {
    return encode(supportCode, diagnostic, CUSBReadError());
}

template <class E>
std::string ownNameOf() {
    const std::string name = boost::core::demangle(typeid(E).name());
    return name.substr(name.rfind(':') + 1);
}

template <class E>
class NamedException : public testing::Test {};

using AllNamed = testing::Types<TransactionInvalidatedException, CUpdateFailed, CUSBReadError, CNetworkTransferError,
                                CUSBImageCorrupted, CUSBDecryptionError, CImageCorrupted, CWrongKeys,
                                CImageLacksIntegrity, ExternalLockDenied, CWildcardImageNotAllowedException,
                                InsufficientRWStorageSpace, DAXUnknownException>;
TYPED_TEST_SUITE(NamedException, AllNamed, );

TYPED_TEST(NamedException, LeavesUnderTheNameOfItsClass) {
    const Wrapped wrapped = wrapThrown(TypeParam() << errinfo_supportcode("S-1"));
    EXPECT_EQ(ownNameOf<TypeParam>(), wrapped.name);
    EXPECT_EQ(wrapped.supportCode(), "S-1");
    EXPECT_THAT(wrapped.diagnostic(), HasSubstr(ownNameOf<TypeParam>()));
}

TYPED_TEST(NamedException, IsCalledByTheNameOfItsClass) {
    EXPECT_EQ(StandardExceptionHandler::wireNameOf(TypeParam()), ownNameOf<TypeParam>());
}

TYPED_TEST(NamedException, ArrivesAsItsTypeWithCodeAndText) {
    const Wrapped sent{ownNameOf<TypeParam>(), exceptionArchive("S-1", "what happened")};
    try {
        unwrap(sent, "startSearching");
        FAIL() << "nothing was thrown";
    } catch (const TypeParam& caught) {
        EXPECT_EQ(textOf<errinfo_supportcode>(caught), "S-1");
        EXPECT_EQ(textOf<errinfo_string>(caught),
                  "Remote method 'startSearching' raised '" + ownNameOf<TypeParam>() + "' with {\nwhat happened\n}");
    }
}

TEST(StandardExceptionHandler, WritesCodeDiagnosticAndObject) {
    const Wrapped wrapped = wrapThrown(CUSBReadError() << errinfo_supportcode("U-7"));
    EXPECT_EQ(wrapped.archive, golden("exceptions/CUSBReadError"));
}

TEST(StandardExceptionHandler, WritesAnEmptyCodeWhenThereIsNone) {
    EXPECT_EQ(wrapThrown(CUSBReadError()).archive, golden("exceptions/CUSBReadError.no-supportcode"));
}

TEST(StandardExceptionHandler, ReadsTheArchiveOfAnException) {
    const Wrapped sent{"CUSBReadError", golden("exceptions/CUSBReadError")};
    try {
        unwrap(sent);
        FAIL() << "nothing was thrown";
    } catch (const CUSBReadError& caught) {
        EXPECT_EQ(textOf<errinfo_supportcode>(caught), "U-7");
        EXPECT_EQ(textOf<errinfo_string>(caught),
                  "Remote method 'getSearchResult' raised 'CUSBReadError' with {\n" + sent.diagnostic() + "\n}");
    }
}

TEST(StandardExceptionHandler, AttachesNoCodeWhenTheArchiveHasNone) {
    try {
        unwrap({"CUSBReadError", golden("exceptions/CUSBReadError.no-supportcode")});
        FAIL() << "nothing was thrown";
    } catch (const CUSBReadError& caught) {
        EXPECT_EQ(textOf<errinfo_supportcode>(caught), "<no such text>");
    }
}

TEST(StandardExceptionHandler, SendsAnUnknownMethodAsUnknown) {
    const Wrapped wrapped = wrapThrown(UnknownMethodException());
    EXPECT_EQ(wrapped.name, "DAXUnknownException");
    EXPECT_THAT(wrapped.diagnostic(), HasSubstr("DBUSWrapperExceptions::UnknownMethodException"));
}

TEST(StandardExceptionHandler, CallsEveryOtherExceptionUnknown) {
    EXPECT_STREQ(StandardExceptionHandler::wireNameOf(UnknownMethodException()), "DAXUnknownException");
    EXPECT_STREQ(StandardExceptionHandler::wireNameOf(ServiceRevokedException()), "DAXUnknownException");
}

TEST(StandardExceptionHandler, SendsARevokedSessionAsUnknown) {
    const Wrapped wrapped = wrapThrown(ServiceRevokedException() << errinfo_supportcode("R"));
    EXPECT_EQ(wrapped.name, "DAXUnknownException");
    EXPECT_EQ(wrapped.supportCode(), "R");
    EXPECT_THAT(wrapped.diagnostic(), HasSubstr("UserInterestExceptions::ServiceRevokedException"));
}

TEST(StandardExceptionHandler, SendsAnUnreadableArchiveAsUnknown) {
    const Wrapped wrapped = wrap([] { decode<int>(""); });
    EXPECT_EQ(wrapped.name, "DAXUnknownException");
    EXPECT_EQ(wrapped.supportCode(), "");
    EXPECT_THAT(wrapped.diagnostic(), HasSubstr("input stream error"));
}

TEST(StandardExceptionHandler, SendsAStandardExceptionAsUnknown) {
    const Wrapped wrapped = wrap([] { throw std::runtime_error("no such thing"); });
    EXPECT_EQ(wrapped.name, "DAXUnknownException");
    EXPECT_EQ(wrapped.supportCode(), "");
    EXPECT_THAT(wrapped.diagnostic(), HasSubstr("no such thing"));
}

TEST(StandardExceptionHandler, SendsAThrownValueOfAnotherTypeAsUnknown) {
    const Wrapped wrapped = wrap([] { throw 7; });
    EXPECT_EQ(wrapped.name, "DAXUnknownException");
    EXPECT_EQ(wrapped.supportCode(), "");
}

TEST(StandardExceptionHandler, JoinsTheCodesOfNestedExceptions) {
    const auto inner = boost::copy_exception(CWrongKeys() << errinfo_supportcode("B"));
    const Wrapped both =
        wrapThrown(CUpdateFailed() << errinfo_supportcode("A") << boost::errinfo_nested_exception(inner));
    EXPECT_EQ(both.supportCode(), "A-B");
    EXPECT_EQ(both.name, "CUpdateFailed");
    EXPECT_EQ(wrapThrown(CUpdateFailed() << boost::errinfo_nested_exception(inner)).supportCode(), "B");
}

struct OfAnotherKind {};

TEST(StandardExceptionHandler, PassesANestedExceptionOfAnotherKindOn) {
    const auto inner = boost::copy_exception(OfAnotherKind());
    EXPECT_THROW(wrapThrown(CUpdateFailed() << boost::errinfo_nested_exception(inner)), OfAnotherKind);
    EXPECT_TRUE(FakeKovan::messages().empty());
}

template <class First, class Second>
struct OfTwoTypes : Second, First {};

// An exception of two neighbouring types of the table is sent under the name of the first one.
template <class First, class Second, class... Rest>
void expectTriedInOrder(testing::Types<First, Second, Rest...>) {
    EXPECT_EQ((wrapThrown(OfTwoTypes<First, Second>()).name), ownNameOf<First>());
    EXPECT_EQ((StandardExceptionHandler::wireNameOf(OfTwoTypes<First, Second>())), ownNameOf<First>());
    if constexpr (sizeof...(Rest) > 0) {
        expectTriedInOrder(testing::Types<Second, Rest...>());
    }
}

TEST(StandardExceptionHandler, TriesTheTypesInTheOrderOfTheTable) {
    expectTriedInOrder(AllNamed());
}

TEST(StandardExceptionHandler, LogsWhatItSends) {
    const Wrapped wrapped = wrapThrown(CUSBReadError() << errinfo_supportcode("U-7"));
    EXPECT_THAT(FakeKovan::messages("DBG"), ElementsAre("IPC Call: Exception has been caught. SupportCode: U-7 "
                                                        "Diagnostic: " +
                                                        wrapped.diagnostic()));
}

TEST(StandardExceptionHandler, LogsWhatItRethrows) {
    EXPECT_THROW(unwrap({"CWrongKeys", exceptionArchive("", "bad key")}, "getSearchResult"), CWrongKeys);
    EXPECT_THAT(FakeKovan::messages("DBG"),
                ElementsAre("Remote method 'getSearchResult' raised 'CWrongKeys' with {\nbad key\n}"));
}

TEST(StandardExceptionHandler, SetsItsOwnThrowLocation) {
    try {
        unwrap({"CWrongKeys", exceptionArchive("", "bad key")});
        FAIL() << "nothing was thrown";
    } catch (const CWrongKeys& caught) {
        EXPECT_THAT(*boost::get_error_info<boost::throw_function>(caught), HasSubstr("rethrowException"));
    }
}

TEST(StandardExceptionHandler, KeepsTypeCodeAndTextOnTheNextHop) {
    const Wrapped first{"CUSBReadError", exceptionArchive("U-7", "the stick was pulled")};
    const Wrapped second = wrap([&] { unwrap(first); });
    EXPECT_EQ(second.name, "CUSBReadError");
    EXPECT_EQ(second.supportCode(), "U-7");
    EXPECT_THAT(second.diagnostic(), HasSubstr("raised 'CUSBReadError' with {\nthe stick was pulled\n}"));
}

TEST(StandardExceptionHandler, PassesAnUnknownExceptionOnUnderItsName) {
    const Wrapped first = wrap([] { throw std::runtime_error("no such thing"); });
    EXPECT_THROW(unwrap(first), DAXUnknownException);
    EXPECT_EQ(wrap([&] { unwrap(first); }).name, "DAXUnknownException");
}

TEST(StandardExceptionHandlerDeathTest, FailsAnAssertionForANameThatIsNotInTheTable) {
    const std::string message = "Adapter sent exception that is not known by Proxy.";
    EXPECT_ASSERTION_MSG(unwrap({"Invalid arguments.", "Nothing to add."}), "false", message);
    EXPECT_ASSERTION_MSG(unwrap({"ServiceRevokedException", exceptionArchive("", "")}), "false", message);
    EXPECT_ASSERTION_MSG(unwrap({"", ""}), "false", message);
}

TEST(StandardExceptionHandler, PassesTheErrorOfAnUnreadableArchiveOn) {
    EXPECT_THROW(unwrap({"CUSBReadError", ""}), boost::archive::archive_exception);
    EXPECT_THROW(unwrap({"CUSBReadError", "Nothing to add."}), boost::archive::archive_exception);
}

TEST(StandardExceptionHandler, PassesTheErrorOfAnUnwritableStreamOn) {
    std::stringstream broken;
    broken.setstate(std::ios::badbit);
    std::string name;
    try {
        throw boost::enable_current_exception(CWrongKeys());
    } catch (...) {
        EXPECT_THROW(StandardExceptionHandler::wrapException(boost::current_exception(), name, broken),
                     boost::archive::archive_exception);
    }
    EXPECT_EQ(name, "CWrongKeys");
    EXPECT_EQ(FakeKovan::messages("DBG").size(), 1U);
}

} // namespace
