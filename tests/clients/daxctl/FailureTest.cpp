#include "daxctl/Failure.h"

#include <gmock/gmock.h>

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"
#include "dax/client.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using daxctl::Failure;
using Reason = dax::Unreachable::Reason;

template <class Statement>
Failure failureOf(const Statement& statement) {
    try {
        statement();
    } catch (...) {
        return daxctl::describeCurrentException();
    }
    return {"nothing was thrown", {}, {}, {}};
}

TEST(Failure, IsShownByNameSupportCodeAndText) {
    EXPECT_EQ((Failure{"CWrongKeys", "E-42", "It is broken.", "chain"}.toString()),
              "CWrongKeys (support code E-42): It is broken.");
}

TEST(Failure, IsShownWithoutASupportCodeWhenItHasNone) {
    EXPECT_EQ((Failure{"CWrongKeys", "", "It is broken.", "chain"}.toString()), "CWrongKeys: It is broken.");
}

TEST(Failure, IsShownByItsDiagnosticWhenItHasNoText) {
    EXPECT_EQ((Failure{"CWrongKeys", "", "", "the whole\nchain"}.toString()), "CWrongKeys: the whole\nchain");
}

TEST(Failure, ShowsNothingThatATerminalObeys) {
    EXPECT_EQ((Failure{"C\x1b[31m", "\x07", "It is\nbroken.", "chain"}.toString()),
              "C\\x1b[31m (support code \\x07): It is\\x0abroken.");
    EXPECT_EQ((Failure{"CWrongKeys", "", "", "the whole\n\x1b[31mchain"}.toString()),
              "CWrongKeys: the whole\n\\x1b[31mchain");
    EXPECT_EQ((Failure{"", "", "No\x1b[31m", "", true}.toString()), "No\\x1b[31m");
}

TEST(Failure, IsADocument) {
    EXPECT_EQ((Failure{"CWrongKeys", "E-42", "It is broken.", "chain"}.toJson().dump()),
              R"({"name":"CWrongKeys","supportCode":"E-42","text":"It is broken.","diagnostic":"chain",)"
              R"("kind":"UNKNOWN"})");
}

TEST(DescribeCurrentException, TellsWhatTheServiceReports) {
    const Failure failure = failureOf(
        [] { throw dax::Error(dax::Error::Kind::USB_READ_ERROR, "CUSBReadError", "E-42", "It is broken.", "chain"); });
    EXPECT_EQ(failure.name, "CUSBReadError");
    EXPECT_EQ(failure.kind, "USB_READ_ERROR");
    EXPECT_EQ(failure.supportCode, "E-42");
    EXPECT_EQ(failure.text, "It is broken.");
    EXPECT_EQ(failure.diagnostic, "chain");
}

TEST(DescribeCurrentException, TellsWhatPreventedTheCall) {
    const auto nameOf = [](Reason reason, const std::string& busError) {
        const Failure failure = failureOf([&] { throw dax::Unreachable(reason, busError, "No way.", "chain"); });
        EXPECT_EQ(failure.supportCode, "");
        EXPECT_EQ(failure.diagnostic, "chain");
        return failure.name;
    };
    const std::string prefix = "org.freedesktop.DBus.Error.";
    EXPECT_EQ(nameOf(Reason::NO_BUS, ""), "ErrorConnectingToDBUS");
    EXPECT_EQ(nameOf(Reason::NO_BUS, prefix + "FileNotFound"), "ErrorConnectingToDBUS");
    EXPECT_EQ(nameOf(Reason::NO_BUS, prefix + "Disconnected"), "RemoteObjectNotAccessible");
    EXPECT_EQ(nameOf(Reason::NO_SERVICE, prefix + "TimedOut"), "RemoteObjectActivationTimedOut");
    EXPECT_EQ(nameOf(Reason::NO_SERVICE, prefix + "ServiceUnknown"), "RemoteObjectNotAccessible");
    EXPECT_EQ(nameOf(Reason::NOT_ALLOWED, prefix + "AccessDenied"), "RemoteObjectNotAccessible");
    EXPECT_EQ(nameOf(Reason::TIMED_OUT, prefix + "Timeout"), "RemoteObjectNotAccessible");
}

TEST(DescribeCurrentException, TellsTheKindAsTheLibraryNamesIt) {
    const auto kindOfError = [](dax::Error::Kind kind) {
        return failureOf([kind] { throw dax::Error(kind, "", "", "", ""); }).kind;
    };
    EXPECT_EQ(kindOfError(dax::Error::Kind::TRANSACTION_INVALIDATED), "TRANSACTION_INVALIDATED");
    EXPECT_EQ(kindOfError(dax::Error::Kind::EXTERNAL_LOCK_DENIED), "EXTERNAL_LOCK_DENIED");
    EXPECT_EQ(kindOfError(dax::Error::Kind::INSUFFICIENT_STORAGE), "INSUFFICIENT_STORAGE");
    EXPECT_EQ(kindOfError(dax::Error::Kind::UNKNOWN), "UNKNOWN");
    const auto kindOfReason = [](Reason reason) {
        return failureOf([reason] { throw dax::Unreachable(reason, "", "", ""); }).kind;
    };
    EXPECT_EQ(kindOfReason(Reason::NO_BUS), "NO_BUS");
    EXPECT_EQ(kindOfReason(Reason::TIMED_OUT), "TIMED_OUT");
}

TEST(DescribeCurrentException, TellsWhatTheBusSays) {
    for (const char* const busError : {"org.freedesktop.DBus.Error.ServiceUnknown", "", "org.example.Error"}) {
        const Failure failure =
            failureOf([&] { throw dax::Unreachable(Reason::NO_SERVICE, busError, "No way.", "chain"); });
        EXPECT_EQ(failure.toString(), "RemoteObjectNotAccessible: No way.");
    }
    const Failure full = failureOf([] {
        throw dax::Unreachable(Reason::NOT_ALLOWED, "org.freedesktop.DBus.Error.LimitsExceeded", "Too many.", "chain");
    });
    EXPECT_EQ(full.toString(), "RemoteObjectNotAccessible: Too many.");
}

TEST(DescribeCurrentException, TellsInASentenceWhoMayUseTheService) {
    const Failure failure = failureOf([] {
        throw dax::Unreachable(Reason::NOT_ALLOWED, "org.freedesktop.DBus.Error.AccessDenied",
                               "Rejected send message, 2 matched rules", "chain");
    });
    EXPECT_EQ(failure.toString(), "You may not use the update service: be root or a member of dax");
    EXPECT_EQ(failure.text, "You may not use the update service: be root or a member of dax");
    EXPECT_EQ(failure.name, "RemoteObjectNotAccessible");
    EXPECT_EQ(failure.kind, "NOT_ALLOWED");
    EXPECT_EQ(failure.diagnostic, "chain");
}

TEST(DescribeCurrentException, TellsAFailureOfTheDevicesFilesByItsText) {
    const Failure failure = failureOf([] { DAX_THROW(Common::Utils::GenericException(), "It is broken."); });
    EXPECT_EQ(failure.toString(), "DAXUnknownException: It is broken.");
    EXPECT_THAT(failure.diagnostic, HasSubstr("GenericException"));
}

TEST(DescribeCurrentException, TellsWhatAnyOtherExceptionSays) {
    const Failure failure = failureOf([] { throw std::runtime_error("It is broken."); });
    EXPECT_EQ(failure.toString(), "Error: It is broken.");
    EXPECT_EQ(failure.diagnostic, "It is broken.");
}

} // namespace
} // namespace DAX::Tests
