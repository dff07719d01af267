#include "Utility/Utils/SingletonsID.h"

#include <sstream>

#include <gtest/gtest.h>

namespace DAX::Tests {
namespace {

using namespace Common::Utils;

struct Row {
    int value;
    const char* text;
};

class SingletonsIDTest : public testing::TestWithParam<Row> {
protected:
    const SingletonsID id = static_cast<SingletonsID>(GetParam().value);
};

std::string streamed(SingletonsID id) {
    std::ostringstream stream;
    stream << id;
    return stream.str();
}

TEST_P(SingletonsIDTest, HasItsText) {
    EXPECT_EQ(singletonsIdToString(id), GetParam().text);
}

TEST_P(SingletonsIDTest, IsStreamedAsItsText) {
    EXPECT_EQ(streamed(id), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(, SingletonsIDTest,
                         testing::Values(Row{0, "USER_DATA_REGISTER"},                    //
                                         Row{1, "TVS_SIGNAL_DISTRIBUTOR"},                //
                                         Row{2, "POWER_OFF_CB_DISTRIBUTOR"},              //
                                         Row{3, "G_MAIN_LOOP"},                           //
                                         Row{4, "DEBUG_AND_TEST_PARMS"},                  //
                                         Row{5, "INSTALLATION_PERFORMANCE_PARAMS"},       //
                                         Row{6, "SINGLETON_CAMERA_PLUGIN"},               //
                                         Row{7, "SINGLETON_SUBMICOM_PLUGIN"},             //
                                         Row{8, "SINGLETON_EXAMPLE_PLUGIN"},              //
                                         Row{9, "SINGLETON_INDEPENDENT_FIRMWARE_PLUGIN"}, //
                                         Row{10, "SINGLETON_BOOTCLOCK_INITIALIZER"},      //
                                         Row{11, "SINGLETON_WAKEUP_ENABLER"},             //
                                         Row{12, "SINGLETON_USB_DEVICE_INITIALIZER"},     //
                                         Row{13, "SINGLETON_POWER_API_INITIALIZER"},      //
                                         Row{14, "SINGLETON_USB_CB_DISTRIBUTOR"},         //
                                         Row{15, "SINGLETON_USB_NFS_MOUNT"},              //
                                         Row{16, "SINGLETON_FENNO_MOUNTER"},              //
                                         Row{17, "SINGLETON_OPENSSL_INITIALIZER"},        //
                                         Row{18, "SINGLETON_SYSTEM_CONTROL"},             //
                                         Row{19, "DUMMY_SINGLETON"},                      //
                                         Row{20, "DEPENDENT_DUMMY_SINGLETON"},            //
                                         Row{21, "PARTITION_MANAGERS_REGISTER"}),         //
                         [](const testing::TestParamInfo<Row>& row) { return std::string(row.param.text); });

INSTANTIATE_TEST_SUITE_P(Unknown, SingletonsIDTest,
                         testing::Values(Row{22, "Error: singleton identifier not recognized (22)"},
                                         Row{99, "Error: singleton identifier not recognized (99)"},
                                         Row{-1, "Error: singleton identifier not recognized (-1)"},
                                         Row{2147483647, "Error: singleton identifier not recognized (2147483647)"},
                                         Row{-2147483647 - 1,
                                             "Error: singleton identifier not recognized (-2147483648)"}));

} // namespace
} // namespace DAX::Tests
