#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSHelper.h"

#include <stdexcept>
#include <string>

#include <boost/serialization/optional.hpp>
#include <boost/serialization/string.hpp>
#include <gtest/gtest.h>

#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"
#include "support/FakeDBUSProxy.h"
#include "support/ProcessDeath.h"
#include "support/SampleRecords.h"
#include "support/WireGoldens.h"

using namespace DAX;
using namespace DAX::Tests;
using boost::archive::archive_exception;
using boost::archive::text_iarchive;
using boost::archive::text_oarchive;
using DAX::Common::DBUSWrapper::IDBUSProxy;
using DAX::DAXIPC::DBUSLowLevel::StandardExceptionHandler;
namespace DBUSHelper = DAX::DAXIPC::DBUSLowLevel::DBUSHelper;

namespace {

const std::string HEADER = "22 serialization::archive 18";

class HandleAdapterMethod : public testing::Test {
protected:
    static void readNothing(text_iarchive&) {}

    std::stringstream m_in{HEADER};
    std::stringstream m_out;
};

TEST_F(HandleAdapterMethod, DecodesCallsAndEncodes) {
    std::stringstream in(golden("service/acquireExternalLock.request"));
    std::string name;
    int priority = 0;
    DBUSHelper::handleAdapterMethod<unsigned int>(
        in, m_out, [&](text_iarchive& archive) { archive >> name >> priority; },
        [&] { return name == "nine char" && priority == 2 ? 1U : 0U; });
    EXPECT_EQ(m_out.str(), golden("service/acquireExternalLock.reply"));
}

TEST_F(HandleAdapterMethod, EncodesARecord) {
    DBUSHelper::handleAdapterMethod<Service::ServiceTransactionProgress>(
        m_in, m_out, readNothing, [] { return sampleProgress<Service::ServiceTransactionProgress>(1, 50, 2.5F); });
    EXPECT_EQ(m_out.str(), golden("service/getSearchProgress.reply"));
}

TEST_F(HandleAdapterMethod, WritesTheHeaderBeforeItReadsOrCalls) {
    const auto expectHeader = [&](text_iarchive&) { EXPECT_EQ(m_out.str(), HEADER); };
    DBUSHelper::handleAdapterMethod<unsigned int>(m_in, m_out, expectHeader, [&] {
        EXPECT_EQ(m_out.str(), HEADER);
        return 7U;
    });
    EXPECT_EQ(m_out.str(), HEADER + " 7\n");
}

TEST_F(HandleAdapterMethod, NeitherDecodesNorCallsWithoutAValidHeader) {
    std::stringstream empty;
    const auto fail = [](text_iarchive&) { ADD_FAILURE() << "decoded"; };
    EXPECT_THROW(DBUSHelper::handleAdapterMethod<unsigned int>(empty, m_out, fail,
                                                               [] {
                                                                   ADD_FAILURE() << "called";
                                                                   return 0U;
                                                               }),
                 archive_exception);
    EXPECT_EQ(m_out.str(), HEADER);
}

TEST_F(HandleAdapterMethod, DoesNotCallWhenAnArgumentIsMissing) {
    int missing = 0;
    EXPECT_THROW(DBUSHelper::handleAdapterMethod<unsigned int>(
                     m_in, m_out, [&](text_iarchive& archive) { archive >> missing; },
                     [] {
                         ADD_FAILURE() << "called";
                         return 0U;
                     }),
                 archive_exception);
}

TEST_F(HandleAdapterMethod, PassesTheExceptionOfTheCallOn) {
    const auto refuse = []() -> unsigned int { throw std::runtime_error("refused"); };
    EXPECT_THROW(DBUSHelper::handleAdapterMethod<unsigned int>(m_in, m_out, readNothing, refuse), std::runtime_error);
}

TEST_F(HandleAdapterMethod, FailsWithCode13WhenTheResultCannotBeWritten) {
    const auto breakTheStream = [&] {
        m_out.setstate(std::ios::failbit);
        return 7U;
    };
    try {
        DBUSHelper::handleAdapterMethod<unsigned int>(m_in, m_out, readNothing, breakTheStream);
        FAIL() << "nothing was thrown";
    } catch (const archive_exception& caught) {
        EXPECT_EQ(static_cast<int>(caught.code), 13);
        EXPECT_EQ(caught.code, archive_exception::output_stream_error);
    }
}

class HandleProxyMethod : public testing::Test {
protected:
    static void writeNothing(text_oarchive&) {}

    template <class R, class Handler = StandardExceptionHandler>
    R call(R defaultValue, const Handler& handler = Handler()) {
        return DBUSHelper::handleProxyMethod<R>("method", writeNothing, *m_proxy, handler, defaultValue);
    }
    void callVoid() { DBUSHelper::handleProxyMethod("method", writeNothing, *m_proxy, StandardExceptionHandler()); }

    FakeDBUS m_bus;
    std::unique_ptr<IDBUSProxy> m_proxy = m_bus.proxy();
};

TEST_F(HandleProxyMethod, SendsTheArgumentsAndReadsTheResult) {
    m_bus.reply("acquireExternalLock", golden("service/acquireExternalLock.reply"));
    const auto serialize = [](text_oarchive& archive) {
        const std::string name = "nine char";
        const int priority = 2;
        archive << name << priority;
    };
    EXPECT_EQ(DBUSHelper::handleProxyMethod<unsigned int>("acquireExternalLock", serialize, *m_proxy,
                                                          StandardExceptionHandler(), 0U),
              1U);
    EXPECT_EQ(m_bus.parameters("acquireExternalLock"), golden("service/acquireExternalLock.request"));
}

TEST_F(HandleProxyMethod, SendsTheBareHeaderWhenThereAreNoArguments) {
    m_bus.reply("method");
    callVoid();
    EXPECT_EQ(m_bus.parameters("method"), HEADER);
}

TEST_F(HandleProxyMethod, GivesTheDefaultWhenTheReplyHasNoResult) {
    m_bus.reply("method", "");
    EXPECT_EQ(call(std::string("the default")), "the default");
    EXPECT_EQ(call(41U), 41U);
}

TEST_F(HandleProxyMethod, ReadsNothingOfTheReplyForVoid) {
    m_bus.reply("method", HEADER + "\n");
    EXPECT_NO_THROW(callVoid());
    m_bus.reply("method", "no archive at all");
    EXPECT_NO_THROW(callVoid());
}

TEST_F(HandleProxyMethod, PassesTheErrorOfAnUnreadableResultOn) {
    m_bus.reply("method", "Nothing to add.");
    EXPECT_THROW(call(41U), archive_exception);
    m_bus.reply("method", HEADER);
    EXPECT_THROW(call(41U), archive_exception);
}

TEST_F(HandleProxyMethod, ThrowsTheExceptionOfTheFarSide) {
    m_bus.replyWithException("method", "CUSBReadError", golden("exceptions/CUSBReadError"));
    EXPECT_THROW(call(41U), UserInterestExceptions::CUSBReadError);
    EXPECT_THROW(callVoid(), UserInterestExceptions::CUSBReadError);
}

TEST_F(HandleProxyMethod, PassesTheExceptionOfTheTransportOn) {
    m_bus.fail("method", std::runtime_error("no bus"));
    EXPECT_THROW(callVoid(), std::runtime_error);
}

// Returns, which a handler must not do.
struct ReturningHandler {
    void unwrapException(const std::string&, const std::string&, std::stringstream&) const {}
};

using HandleProxyMethodDeathTest = HandleProxyMethod;

TEST_F(HandleProxyMethodDeathTest, FailsAnAssertionWhenTheHandlerReturns) {
    m_bus.replyWithException("method", "a name", "an archive");
    EXPECT_ASSERTION_MSG(call(41U, ReturningHandler()), "false", "Adapter sent exception that is not known by Proxy.");
}

TEST_F(HandleProxyMethodDeathTest, FailsAnAssertionForTheReplyToInvalidArguments) {
    m_bus.replyWithException("method", "Invalid arguments.", "Nothing to add.");
    EXPECT_ASSERTION_MSG(callVoid(), "false", "Adapter sent exception that is not known by Proxy.");
}

} // namespace
