#include "plantcfg.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/host/DeviceTest.h"

namespace {

const char* const RECORDS = "run/kovan/plantcfg-resets.jsonl";

class PlantcfgTest : public DAX::Tests::DeviceTest {
protected:
    static int model() {
        int value = -1;
        EXPECT_EQ(1, plantcfg_get_model_enum(&value));
        return value;
    }
    static int localset() {
        int value = -1;
        EXPECT_EQ(1, plantcfg_get_localset_enum(&value));
        return value;
    }
};

} // namespace

TEST_F(PlantcfgTest, NumbersHaveDefaults) {
    EXPECT_EQ(1, model());
    EXPECT_EQ(1, localset());
}

TEST_F(PlantcfgTest, NumbersAreTakenFromTheFile) {
    device("[plantcfg]\nmodel=17\nlocalset=-3\n");

    EXPECT_EQ(17, model());
    EXPECT_EQ(-3, localset());
}

TEST_F(PlantcfgTest, NumberThatIsNoneIsToldAndHasItsDefault) {
    device("[plantcfg]\nmodel=M\nlocalset=4\n");

    EXPECT_EQ(path() + ": line 2: 'model' in [plantcfg] is no number of 32 bits: 'M'; using the default\n",
              DAX::Tests::errorsOf([] {
                  EXPECT_EQ(1, model());
                  EXPECT_EQ(4, localset());
              }));
}

TEST_F(PlantcfgTest, FailsWithTheResultThatTheFileGives) {
    device("[results]\nplantcfg/model=-1\nplantcfg/localset=0\n");
    int value = 17;

    EXPECT_EQ(-1, plantcfg_get_model_enum(&value));
    EXPECT_EQ(0, plantcfg_get_localset_enum(&value));
    EXPECT_EQ(17, value);
}

TEST_F(PlantcfgTest, ResultThatIsSuccessFailsNothing) {
    device("[plantcfg]\nmodel=17\n[results]\nplantcfg/model=1\n");

    EXPECT_EQ(17, model());
}

TEST_F(PlantcfgTest, NowhereToPutANumberFails) {
    EXPECT_EQ(-1, plantcfg_get_model_enum(nullptr));
    EXPECT_EQ(-1, plantcfg_get_localset_enum(nullptr));
}

TEST_F(PlantcfgTest, ResetIsWrittenDownAndDoesNothingElse) {
    device("[plantcfg]\nmodel=17\n");
    EXPECT_EQ(1, plantcfg_reset(0));
    EXPECT_EQ(1, plantcfg_reset(2));

    const std::string time = "\"time\":\"[-0-9]{10}T[:0-9]{8}\\.[0-9]{3}Z\"";
    EXPECT_THAT(m_root.read(RECORDS),
                testing::MatchesRegex("\\{" + time + ",\"mode\":0\\}\n\\{" + time + ",\"mode\":2\\}\n"));
    EXPECT_EQ("[plantcfg]\nmodel=17\n", m_root.read("etc/kovan/device.ini"));
}

TEST_F(PlantcfgTest, ResetThatCannotBeWrittenDownFails) {
    m_root.write("run", "a file where a folder has to be");
    EXPECT_EQ(-1, plantcfg_reset(0));
}
