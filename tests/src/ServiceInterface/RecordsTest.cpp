#include <boost/serialization/optional.hpp>
#include <gtest/gtest.h>

#include "Utility/Utils/GenericException.h"
#include "support/RecordEquality.h"
#include "support/SampleRecords.h"
#include "support/WireGoldens.h"

using namespace DAX;
using namespace DAX::Tests;

namespace {

TEST(ServiceRecords, ProgressTravelsWithTheResultFirst) {
    expectGolden("records/ServiceTransactionProgress",
                 sampleProgress<Service::ServiceTransactionProgress>(1, 50, 2.5F));
}

TEST(ServiceRecords, UpgradeDescriptionTravelsInTheOrderOfItsFields) {
    expectGolden("records/SingleUpgradeDescription", sampleUpgrade());
}

TEST(ServiceRecords, SearchResultCarriesTheUpgradeWithIt) {
    expectGolden("records/ServiceSearchResult", sampleServiceSearchResult());
}

TEST(ServiceRecords, FailedSearchResultIsAValidRecordWithoutAnUpgrade) {
    Service::ServiceSearchResult failed;
    failed.result = Service::SERVICE_TRANSACTION_FAILED;
    expectGolden("records/ServiceSearchResult.failed", failed);
}

TEST(ServiceRecords, UpgradeDescriptionOfAnInvalidKindIsRefused) {
    Service::SingleUpgradeDescription upgrade = sampleUpgrade();
    upgrade.kind = DAXCommon::UpgradeKind(2);
    EXPECT_THROW(decode<Service::SingleUpgradeDescription>(encode(upgrade)), Common::Utils::GenericException);
}

TEST(ServiceRecords, ResultsTravelAsTheirNumbers) {
    EXPECT_EQ(encode(Service::SERVICE_TRANSACTION_UNDEFINED, Service::SERVICE_TRANSACTION_IN_PROGRESS,
                     Service::SERVICE_TRANSACTION_SUCCESS, Service::SERVICE_TRANSACTION_FAILED),
              "22 serialization::archive 18 0 1 2 3\n");
}

} // namespace
