#include "SystemControlTest.h"

namespace DAX::Tests {
namespace {

using Platform::ExternalAppVerificationResult;
using Platform::ISystemControl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string RESULT_KEY = UPDATE_SETTINGS + "ext_app_verification_result";
const std::string ID_KEY = UPDATE_SETTINGS + "ext_app_client_id";

class ExternalAppTest : public SystemControlTest {};

TEST_F(ExternalAppTest, HasEachResultThatThereIs) {
    for (int value = 0; value <= 3; ++value) {
        ISystemControl::setExternalAppVerificationResult(static_cast<ExternalAppVerificationResult>(value));
        EXPECT_EQ(FakeKovan::setting(RESULT_KEY), FakeKovan::Value(value));
        EXPECT_EQ(ISystemControl::getExternalAppVerificationResult(),
                  static_cast<ExternalAppVerificationResult>(value));
    }
    EXPECT_EQ(FakeKovan::count("INF", "CSystemControl::m_getExternalAppVerificationResult()"), 4);
}

TEST_F(ExternalAppTest, HasNoOtherResult) {
    for (const int value : {4, -1}) {
        FakeKovan::setSetting(RESULT_KEY, value);
        EXPECT_EQ(thrownText<Common::Utils::errinfo_stream_text>(ISystemControl::getExternalAppVerificationResult),
                  "Cannot get verification result for external application - invalid value stored in vconf: " +
                      std::to_string(value));
        EXPECT_THAT(FakeKovan::journal(),
                    ElementsAre("log INF CSystemControl::m_getExternalAppVerificationResult()",
                                "log ERR Wrong value: " + std::to_string(value) + " in vconf variable: " + RESULT_KEY));
        FakeKovan::forgetRecords();
    }
}

TEST_F(ExternalAppTest, TellsThatItsResultCannotBeRead) {
    EXPECT_EQ(thrownDescription(ISystemControl::getExternalAppVerificationResult),
              "Cannot get verification result for external application.");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log INF CSystemControl::m_getExternalAppVerificationResult()", failedRead(RESULT_KEY),
                            "log ERR Cannot get the value from vconf variable: " + RESULT_KEY));
}

TEST_F(ExternalAppTest, TellsThatItsResultCannotBeKept) {
    FakeKovan::failWrites(RESULT_KEY, -1);
    EXPECT_EQ(thrownDescription([] {
                  ISystemControl::setExternalAppVerificationResult(static_cast<ExternalAppVerificationResult>(2));
              }),
              "Cannot save verification result for external application.");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("write " + RESULT_KEY + "=2 -> -1", failedWrite(RESULT_KEY),
                            "log ERR Cannot set the value: \"2\" in vconf variable: \"" + RESULT_KEY + "\""));
}

TEST_F(ExternalAppTest, HasAClientThatWaits) {
    ISystemControl::setPendingExternalAppClientID(std::string("client 1"));
    EXPECT_EQ(ISystemControl::getPendingExternalAppClientID(), std::string("client 1"));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("write " + ID_KEY + "=client 1",
                                                  "log INF CSystemControl::m_getPendingExternalAppClientID()"));
}

TEST_F(ExternalAppTest, HasNoClientAnyMoreWhenItIsCleared) {
    ISystemControl::setPendingExternalAppClientID(std::string("client 1"));
    ISystemControl::setPendingExternalAppClientID(boost::none);
    EXPECT_EQ(FakeKovan::setting(ID_KEY), FakeKovan::Value(std::string()));
    EXPECT_EQ(ISystemControl::getPendingExternalAppClientID(), boost::none);
}

TEST_F(ExternalAppTest, HasNoClientWhenThatCannotBeRead) {
    EXPECT_EQ(ISystemControl::getPendingExternalAppClientID(), boost::none);
    EXPECT_THAT(beginning(3),
                ElementsAre("log INF CSystemControl::m_getPendingExternalAppClientID()", failedRead(ID_KEY),
                            StartsWith("log ERR Exception caught while getting pending External App ID from VConf: ")));
    EXPECT_THAT(told("ERR"), HasSubstr("VConfException"));
}

TEST_F(ExternalAppTest, RefusesAnEmptyClient) {
    EXPECT_EQ(thrownDescription([] { ISystemControl::setPendingExternalAppClientID(std::string()); }),
              "Cannot set empty string as client ID.");
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TEST_F(ExternalAppTest, TellsThatItsClientCannotBeKept) {
    FakeKovan::failWrites(ID_KEY, -1);
    EXPECT_EQ(thrownDescription([] { ISystemControl::setPendingExternalAppClientID(std::string("client 1")); }),
              "Cannot save client ID for external application.");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("write " + ID_KEY + "=client 1 -> -1", failedWrite(ID_KEY),
                            "log ERR Cannot set the value: \"client 1\" in vconf variable: " + ID_KEY));
    FakeKovan::forgetRecords();
    EXPECT_EQ(thrownDescription([] { ISystemControl::setPendingExternalAppClientID(boost::none); }),
              "Cannot save client ID for external application.");
    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("write " + ID_KEY + "= -> -1", failedWrite(ID_KEY),
                            "log ERR Cannot set the value: \"<null>\" in vconf variable: " + ID_KEY));
}

} // namespace
} // namespace DAX::Tests
