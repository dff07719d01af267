#include "SystemInfoFixture.h"
#include "support/NamedRow.h"

namespace DAX::Tests {
namespace {

using Platform::ISystemInfo;
using Platform::VConfException;
using testing::ElementsAre;

// A text setting of the store.
struct Identifier : NamedRow {
    std::string (*operation)();
    std::string key;
    std::string logName;
};

const Identifier DUID = {"Duid", ISystemInfo::getDuid, "db/comss/hwduid", "DUID"};
const Identifier ATOKEN = {"Atoken", ISystemInfo::getAtoken, "db/comss/atoken", "Atoken"};
const Identifier OTN_URL = {"OtnUrl", ISystemInfo::getOtnUrl, "rtc/db/comss/gpmurl/otn", "OTN URL"};
const Identifier FIRMWARE = {"Firmware", ISystemInfo::getFirmwareVersion, "db/comss/infolinkversion", "FIRMWARE"};
const Identifier COUNTRY = {"Country", ISystemInfo::getCountryCode, "db/comss/countrycode", "CountryCode"};

class IdentifierTest : public testing::TestWithParam<Identifier> {
protected:
    static std::string told(const std::string& value) {
        return "log DBG Debug only log: " + GetParam().logName + " is " + value;
    }
};

class StoredIdentifier : public IdentifierTest {};

TEST_P(StoredIdentifier, IsTheTextOfTheStore) {
    FakeKovan::setSetting(GetParam().key, "AT");
    EXPECT_EQ(GetParam().operation(), "AT");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(told("AT")));
    EXPECT_THAT(FakeKovan::reads(), ElementsAre(GetParam().key));
}

TEST_P(StoredIdentifier, IsReadAfresh) {
    for (const std::string value : {"AT", "PL"}) {
        FakeKovan::setSetting(GetParam().key, value);
        EXPECT_EQ(GetParam().operation(), value);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, StoredIdentifier, testing::Values(DUID, ATOKEN, OTN_URL, FIRMWARE, COUNTRY), rowName);

class RequiredIdentifier : public IdentifierTest {};

TEST_P(RequiredIdentifier, ThrowsWhatTheStoreThrows) {
    EXPECT_THROW(GetParam().operation(), VConfException);
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedRead(GetParam().key)));
}

INSTANTIATE_TEST_SUITE_P(Of, RequiredIdentifier, testing::Values(DUID, ATOKEN, FIRMWARE), rowName);

class EmptyIdentifier : public IdentifierTest {};

TEST_P(EmptyIdentifier, IsTakenAsItStands) {
    FakeKovan::setSetting(GetParam().key, "");
    EXPECT_EQ(GetParam().operation(), "");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(told("")));
}

INSTANTIATE_TEST_SUITE_P(Of, EmptyIdentifier, testing::Values(ATOKEN, OTN_URL), rowName);

TEST(DuidTest, MustNotBeEmpty) {
    FakeKovan::setSetting(DUID.key, "");
    EXPECT_EQ(thrownDescription(ISystemInfo::getDuid), "DUID value taken from vconf is empty");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG Debug only log: DUID is "));
}

TEST(FirmwareVersionTest, MustNotBeEmpty) {
    FakeKovan::setSetting(FIRMWARE.key, "");
    EXPECT_EQ(thrownDescription(ISystemInfo::getFirmwareVersion), "Firmware value taken from vconf is empty");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG Debug only log: FIRMWARE is "));
}

TEST(OtnUrlTest, IsEmptyWhenItCannotBeRead) {
    EXPECT_EQ(ISystemInfo::getOtnUrl(), "");
    EXPECT_THAT(FakeKovan::journal(), ElementsAre(failedReadOr(OTN_URL.key), "log DBG Debug only log: OTN URL is "));
}

const char WRONG_LENGTH[] = "log WRN CountryCode value taken from vconf has not expected length";

TEST(CountryCodeTest, IsEmptyForAnotherLength) {
    for (const std::string code : {"AUT", "A", ""}) {
        FakeKovan::reset();
        FakeKovan::setSetting(COUNTRY.key, code);
        EXPECT_EQ(ISystemInfo::getCountryCode(), "");
        EXPECT_THAT(FakeKovan::journal(), ElementsAre("log DBG Debug only log: CountryCode is " + code, WRONG_LENGTH));
    }
}

TEST(CountryCodeTest, IsEmptyWhenItCannotBeRead) {
    EXPECT_EQ(ISystemInfo::getCountryCode(), "");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre(failedReadOr(COUNTRY.key), "log DBG Debug only log: CountryCode is ", WRONG_LENGTH));
}

TEST(RefusedIdentifier, IsRefusedAtTheOperationThatAsksForIt) {
    FakeKovan::setSetting(DUID.key, "");
    FakeKovan::setSetting(FIRMWARE.key, "");
    EXPECT_THAT(siteThrownBy(ISystemInfo::getDuid).function, testing::HasSubstr("CSystemInfo::m_getDuid()"));
    EXPECT_THAT(siteThrownBy(ISystemInfo::getFirmwareVersion).function,
                testing::HasSubstr("CSystemInfo::m_getFirmwareVersion()"));
}

} // namespace
} // namespace DAX::Tests
