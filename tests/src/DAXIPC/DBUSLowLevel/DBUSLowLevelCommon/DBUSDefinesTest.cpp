#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"

#include <gtest/gtest.h>

using namespace DAX::DAXIPC::DBUSLowLevel::DBUSNames;

namespace {

TEST(DBUSNames, OfTheServiceManager) {
    using namespace DBUSService::DBUSIServiceManager;
    EXPECT_STREQ(CONNECTION_NAME, "org.kovan.tv.dax.service.servicemanager");
    EXPECT_STREQ(INTERFACE_NAME, "org.kovan.tv.dax.service.iservicemanager");
    EXPECT_STREQ(OBJECT_PATH, "/org/kovan/tv/dax/service/cservicemanager");
}

TEST(DBUSNames, OfTheCoreAreMadeByFunctions) {
    using namespace DBUSCore::DBUSICore;
    EXPECT_EQ(CONNECTION_NAME(), std::string("org.kovan.tv.dax.core.TV"));
    EXPECT_EQ(INTERFACE_NAME(), std::string("org.kovan.tv.dax.core.icoreTV"));
    EXPECT_EQ(OBJECT_PATH(), std::string("/org/kovan/tv/dax/core/ccoreTV"));
}

TEST(DBUSNames, OfTheScheduler) {
    using namespace DBUSIOTAScheduler;
    EXPECT_STREQ(CONNECTION_NAME, "org.kovan.tv.dax.otascheduler.otascheduler");
    EXPECT_STREQ(INTERFACE_NAME, "org.kovan.tv.dax.otascheduler.iotascheduler");
    EXPECT_STREQ(OBJECT_PATH, "/org/kovan/tv/dax/otascheduler/cotascheduler");
}

TEST(DBUSNames, OfTheExceptionThatNobodySends) {
    EXPECT_STREQ(DBUSExceptions::UnknownException, "UnknownException");
}

// The constant of a method is spelled like its value.
#define EXPECT_NAMED(METHOD) EXPECT_STREQ(Methods::METHOD, #METHOD)

TEST(DBUSNames, OfTheMethodsOfTheServiceManager) {
    using namespace DBUSService::DBUSIServiceManager;
    EXPECT_NAMED(getService);
    EXPECT_NAMED(getServiceOwner);
    EXPECT_NAMED(getSupportedUpgradeTypes);
    EXPECT_NAMED(getLastSearchingForUpgradeDate);
    EXPECT_NAMED(getCurrentVersion);
    EXPECT_NAMED(acquireExternalLock);
    EXPECT_NAMED(releaseExternalLock);
    EXPECT_NAMED(scheduleFactoryReset);
    EXPECT_NAMED(helloMessage);
}

TEST(DBUSNames, OfTheMethodsOfASession) {
    using namespace DBUSService::DBUSIService;
    EXPECT_NAMED(getClientPriority);
    EXPECT_NAMED(startNewTransaction);
    EXPECT_NAMED(stopTransaction);
    EXPECT_NAMED(invalidate);
}

TEST(DBUSNames, OfTheMethodsOfATransaction) {
    using namespace DBUSService::DBUSIServiceTransaction;
    EXPECT_NAMED(isSearchingPossible);
    EXPECT_NAMED(startSearching);
    EXPECT_NAMED(startModelsSearching);
    EXPECT_NAMED(getSearchProgress);
    EXPECT_NAMED(getSearchResult);
    EXPECT_NAMED(getModelsSearchResult);
    EXPECT_NAMED(startInstallation);
    EXPECT_NAMED(getInstallationProgress);
    EXPECT_NAMED(startFinalization);
    EXPECT_NAMED(getFinalizationProgress);
    EXPECT_NAMED(cancelServiceTransaction);
}

TEST(DBUSNames, OfTheMethodsOfTheCore) {
    using namespace DBUSCore::DBUSICore;
    EXPECT_NAMED(helloMessage);
    EXPECT_NAMED(createTransaction);
    EXPECT_NAMED(getCurrentVersion);
    EXPECT_NAMED(getSupportedUpgradeTypes);
    EXPECT_NAMED(scheduleFactoryReset);
}

TEST(DBUSNames, OfTheMethodsOfACoreTransaction) {
    using namespace DBUSCore::DBUSICoreTransaction;
    EXPECT_NAMED(isSearchingPossible);
    EXPECT_NAMED(startSearching);
    EXPECT_NAMED(startModelsSearching);
    EXPECT_NAMED(getSearchProgress);
    EXPECT_NAMED(getSearchResult);
    EXPECT_NAMED(getModelsSearchResult);
    EXPECT_NAMED(startInstallation);
    EXPECT_NAMED(getInstallationProgress);
    EXPECT_NAMED(startFinalization);
    EXPECT_NAMED(getFinalizationProgress);
    EXPECT_NAMED(cancelCoreTransaction);
}

TEST(DBUSNames, OfTheMethodsOfTheScheduler) {
    using namespace DBUSIOTAScheduler;
    EXPECT_NAMED(registerSchedules);
    EXPECT_NAMED(registerImmediateStandbyUpgrade);
    EXPECT_NAMED(getActiveSchedule);
    EXPECT_NAMED(getClosestSchedule);
    EXPECT_NAMED(removeSchedule);
    EXPECT_NAMED(removeScheduleGroup);
    EXPECT_NAMED(removeAllSchedules);
}

} // namespace
