#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plantcfg.h>

#include "platform/host/DeviceTest.h"

namespace {

const char* const RECORDS = "run/kovan/plantcfg-resets.jsonl";

class PlantcfgTest : public DAX::Tests::DeviceTest {
protected:
    static int model() {
        int value = -1;
        EXPECT_EQ(plantcfg_get_model_enum(&value), 1);
        return value;
    }
    static int localset() {
        int value = -1;
        EXPECT_EQ(plantcfg_get_localset_enum(&value), 1);
        return value;
    }
};

} // namespace

TEST_F(PlantcfgTest, NumbersHaveDefaults) {
    EXPECT_EQ(model(), 1);
    EXPECT_EQ(localset(), 1);
}

TEST_F(PlantcfgTest, NumbersAreTakenFromTheFile) {
    device("[plantcfg]\nmodel=17\nlocalset=-3\n");

    EXPECT_EQ(model(), 17);
    EXPECT_EQ(localset(), -3);
}

TEST_F(PlantcfgTest, TextInPlaceOfANumberIsReportedAndTheDefaultIsUsed) {
    device("[plantcfg]\nmodel=M\nlocalset=4\n");

    EXPECT_EQ(DAX::Tests::errorsOf([] {
                  EXPECT_EQ(model(), 1);
                  EXPECT_EQ(localset(), 4);
              }),
              path() + ": line 2: 'model' in [plantcfg] is no number of 32 bits: 'M'; using the default\n");
}

TEST_F(PlantcfgTest, FailsWithTheResultThatTheFileGives) {
    device("[results]\nplantcfg/model=-1\nplantcfg/localset=0\n");
    int value = 17;

    EXPECT_EQ(plantcfg_get_model_enum(&value), -1);
    EXPECT_EQ(plantcfg_get_localset_enum(&value), 0);
    EXPECT_EQ(value, 17);
}

TEST_F(PlantcfgTest, ResultThatIsSuccessFailsNothing) {
    device("[plantcfg]\nmodel=17\n[results]\nplantcfg/model=1\n");

    EXPECT_EQ(model(), 17);
}

TEST_F(PlantcfgTest, NullPointerForTheNumberFails) {
    EXPECT_EQ(plantcfg_get_model_enum(nullptr), -1);
    EXPECT_EQ(plantcfg_get_localset_enum(nullptr), -1);
}

TEST_F(PlantcfgTest, ResetIsRecordedAndDoesNothingElse) {
    device("[plantcfg]\nmodel=17\n");
    EXPECT_EQ(plantcfg_reset(0), 1);
    EXPECT_EQ(plantcfg_reset(2), 1);

    const std::string time = "\"time\":\"[-0-9]{10}T[:0-9]{8}\\.[0-9]{3}Z\"";
    EXPECT_THAT(m_root.read(RECORDS),
                testing::MatchesRegex("\\{" + time + ",\"mode\":0\\}\n\\{" + time + ",\"mode\":2\\}\n"));
    EXPECT_EQ(m_root.read("etc/kovan/device.ini"), "[plantcfg]\nmodel=17\n");
}

TEST_F(PlantcfgTest, ResetThatCannotBeRecordedFails) {
    m_root.write("run", "a file where a folder has to be");
    EXPECT_EQ(plantcfg_reset(0), -1);
}
