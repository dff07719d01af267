// Bad parameters for every method of the service manager's object, with an open session and transaction: each call gets
// one answer, the state stays good, and no length in a message makes the process allocate memory for it.
#include <gmock/gmock.h>

#include "BoundedMemory.h"
#include "support/Corruption.h"
#include "support/FakeKovan.h"
#include "support/LiveService.h"
#include "support/TemporaryRoot.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {

void PrintTo(const ServiceMethod& method, std::ostream* out) {
    *out << method.name;
}

namespace {

using testing::HasSubstr;
using testing::ValuesIn;

class HandlerBadInput : public testing::TestWithParam<ServiceMethod> {
protected:
    Reply answerTo(const std::string& parameters) {
        const Reply reply = withBoundedMemory(parameters, [&] { return service.call(GetParam(), parameters); });
        if (!reply.normal) {
            EXPECT_EQ(wireExceptionNames().count(reply.exceptionName), 1U) << reply.exceptionName;
            EXPECT_NE(reply.diagnostic(), "");
            expectUnharmed();
        }
        service.restore();
        FakeKovan::forgetRecords();
        return reply;
    }

    void expectAnswers(const std::vector<std::string>& messages) {
        for (const std::string& message : messages) {
            answerTo(message);
            if (HasFailure()) {
                FAIL() << GetParam().name << " " << shown(message);
            }
        }
    }

    void expectUnreadable(const std::string& parameters) {
        const Reply reply = answerTo(parameters);
        ASSERT_FALSE(reply.normal) << shown(parameters);
        EXPECT_EQ(reply.exceptionName, "DAXUnknownException");
        EXPECT_THAT(reply.diagnostic(), HasSubstr("archive_exception"));
    }

    // Checks that the session and the transaction are still the ones that were opened.
    void expectUnharmed() {
        for (const char* const question : {"getClientPriority", "isSearchingPossible"}) {
            EXPECT_TRUE(service.call(methodNamed(question), encode()).normal) << question;
        }
    }

    static const ServiceMethod& methodNamed(const std::string& name) {
        const auto& methods = serviceMethods();
        return *std::find_if(methods.begin(), methods.end(), [&](const auto& method) { return method.name == name; });
    }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    LiveService service;
    const std::string good = golden("service/" + GetParam().name + ".request");
};

TEST_P(HandlerBadInput, IsAnsweredWhereverItIsCut) {
    expectAnswers(cutsOf(good));
}

TEST_P(HandlerBadInput, IsAnsweredWhicheverByteIsChanged) {
    expectAnswers(changesOf(good, TELLING_BYTES));
}

TEST_P(HandlerBadInput, IsAnsweredWhicheverTokenBecomesAHugeLength) {
    expectAnswers(tokenChangesOf(good, HUGE_LENGTHS));
}

TEST_P(HandlerBadInput, IsAnsweredWhicheverTokenIsANumberOutOfRange) {
    expectAnswers(tokenChangesOf(good, NUMBERS_OUT_OF_RANGE));
}

TEST_P(HandlerBadInput, IsAnsweredWhateverNoiseItIs) {
    expectAnswers(noise(1 << 20));
}

TEST_P(HandlerBadInput, BytesAfterAGoodArchiveChangeNothing) {
    const Reply reply = answerTo(good);
    for (const std::string& rest : {std::string(" "), std::string("\n"), std::string(" 1 2 3"), noise(1000)[0]}) {
        const Reply other = answerTo(good + " " + rest);
        EXPECT_EQ(other.normal, reply.normal);
        EXPECT_EQ(other.exceptionName, reply.exceptionName);
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, HandlerBadInput, ValuesIn(serviceMethods()),
                         [](const auto& method) { return method.param.name; });

// The methods that read parameters refuse an archive at its header.
class HandlerBadHeader : public HandlerBadInput {};

TEST_P(HandlerBadHeader, IsRefusedWithoutBytes) {
    expectUnreadable("");
}

TEST_P(HandlerBadHeader, IsRefusedWithAnUnknownVersion) {
    for (const std::string version : {"19", "65535", "65536", "-1", "4294967296", "x"}) {
        expectUnreadable("22 serialization::archive " + version + good.substr(28));
    }
}

TEST_P(HandlerBadHeader, IsRefusedWithAnotherSignature) {
    expectUnreadable("22 serialization::Archive" + good.substr(25));
    expectUnreadable("21 serialization::archive" + good.substr(25));
}

TEST_P(HandlerBadHeader, IsRefusedWithASignatureOfHugeLength) {
    for (const std::string& length : HUGE_LENGTHS) {
        expectUnreadable(length + good.substr(2));
    }
}

TEST_P(HandlerBadHeader, IsRefusedWithBytesBeforeIt) {
    for (const std::string before : {"x", "-", "1", "\xff"}) {
        expectUnreadable(before + good);
    }
    expectUnreadable(std::string(1, '\0') + good);
}

std::vector<ServiceMethod> readingMethods() {
    std::vector<ServiceMethod> methods = serviceMethods();
    methods.erase(std::remove_if(methods.begin(), methods.end(), std::not_fn(readsParameters)), methods.end());
    return methods;
}

INSTANTIATE_TEST_SUITE_P(Methods, HandlerBadHeader, ValuesIn(readingMethods()),
                         [](const auto& method) { return method.param.name; });

// A length that one method declares in a message that cannot hold it.
struct Declaration {
    const char* method;
    std::string before; // up to the length
    std::string behind;
};

class DeclaredLength : public testing::TestWithParam<Declaration> {};

TEST_P(DeclaredLength, IsRefusedWithoutMemoryForIt) {
    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    LiveService service;
    for (const std::string& length : HUGE_LENGTHS) {
        const std::string message = "22 serialization::archive 18 " + GetParam().before + length + GetParam().behind;
        const AllocationMeter meter;
        const Reply reply = service.call({GetParam().method, Caller::TRANSACTION}, message);
        EXPECT_LT(meter.largest(), 64U * 1024) << length;
        EXPECT_FALSE(reply.normal) << length;
        EXPECT_THAT(reply.diagnostic(), HasSubstr("archive_exception")) << length;
    }
}

INSTANTIATE_TEST_SUITE_P(Of, DeclaredLength,
                         testing::Values(Declaration{"startSearching", "", " abc"},
                                         Declaration{"helloMessage", "", " Proxy-1"},
                                         Declaration{"acquireExternalLock", "", " nine char 2"},
                                         Declaration{"getService", "4 10 update app 2 ", " Proxy-1 4 :1.7"},
                                         Declaration{"startInstallation", "0 0 ", " 0 1 a 3 b c"},
                                         Declaration{"startInstallation", "0 0 2 0 1 a ", " b c"},
                                         Declaration{"startFinalization", "0 0 ", " 0 1 a 1"}),
                         [](const auto& declaration) {
                             return declaration.param.method + std::to_string(declaration.index);
                         });

} // namespace
} // namespace DAX::Tests
