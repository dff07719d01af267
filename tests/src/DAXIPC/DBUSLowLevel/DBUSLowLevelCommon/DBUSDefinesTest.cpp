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

TEST(DBUSNames, OfTheMethodsOfTheServiceManager) {
    using namespace DBUSService::DBUSIServiceManager;
    EXPECT_STREQ(Methods::getService, "getService");
    EXPECT_STREQ(Methods::getServiceOwner, "getServiceOwner");
    EXPECT_STREQ(Methods::getSupportedUpgradeTypes, "getSupportedUpgradeTypes");
    EXPECT_STREQ(Methods::getLastSearchingForUpgradeDate, "getLastSearchingForUpgradeDate");
    EXPECT_STREQ(Methods::getCurrentVersion, "getCurrentVersion");
    EXPECT_STREQ(Methods::acquireExternalLock, "acquireExternalLock");
    EXPECT_STREQ(Methods::releaseExternalLock, "releaseExternalLock");
    EXPECT_STREQ(Methods::scheduleFactoryReset, "scheduleFactoryReset");
    EXPECT_STREQ(Methods::helloMessage, "helloMessage");
}

TEST(DBUSNames, OfTheMethodsOfASession) {
    using namespace DBUSService::DBUSIService;
    EXPECT_STREQ(Methods::getClientPriority, "getClientPriority");
    EXPECT_STREQ(Methods::startNewTransaction, "startNewTransaction");
    EXPECT_STREQ(Methods::stopTransaction, "stopTransaction");
    EXPECT_STREQ(Methods::invalidate, "invalidate");
}

TEST(DBUSNames, OfTheMethodsOfATransaction) {
    using namespace DBUSService::DBUSIServiceTransaction;
    EXPECT_STREQ(Methods::isSearchingPossible, "isSearchingPossible");
    EXPECT_STREQ(Methods::startSearching, "startSearching");
    EXPECT_STREQ(Methods::startModelsSearching, "startModelsSearching");
    EXPECT_STREQ(Methods::getSearchProgress, "getSearchProgress");
    EXPECT_STREQ(Methods::getSearchResult, "getSearchResult");
    EXPECT_STREQ(Methods::getModelsSearchResult, "getModelsSearchResult");
    EXPECT_STREQ(Methods::startInstallation, "startInstallation");
    EXPECT_STREQ(Methods::getInstallationProgress, "getInstallationProgress");
    EXPECT_STREQ(Methods::startFinalization, "startFinalization");
    EXPECT_STREQ(Methods::getFinalizationProgress, "getFinalizationProgress");
    EXPECT_STREQ(Methods::cancelServiceTransaction, "cancelServiceTransaction");
}

TEST(DBUSNames, OfTheMethodsOfTheCore) {
    using namespace DBUSCore::DBUSICore;
    EXPECT_STREQ(Methods::helloMessage, "helloMessage");
    EXPECT_STREQ(Methods::createTransaction, "createTransaction");
    EXPECT_STREQ(Methods::getCurrentVersion, "getCurrentVersion");
    EXPECT_STREQ(Methods::getSupportedUpgradeTypes, "getSupportedUpgradeTypes");
    EXPECT_STREQ(Methods::scheduleFactoryReset, "scheduleFactoryReset");
}

TEST(DBUSNames, OfTheMethodsOfACoreTransaction) {
    using namespace DBUSCore::DBUSICoreTransaction;
    EXPECT_STREQ(Methods::isSearchingPossible, "isSearchingPossible");
    EXPECT_STREQ(Methods::startSearching, "startSearching");
    EXPECT_STREQ(Methods::startModelsSearching, "startModelsSearching");
    EXPECT_STREQ(Methods::getSearchProgress, "getSearchProgress");
    EXPECT_STREQ(Methods::getSearchResult, "getSearchResult");
    EXPECT_STREQ(Methods::getModelsSearchResult, "getModelsSearchResult");
    EXPECT_STREQ(Methods::startInstallation, "startInstallation");
    EXPECT_STREQ(Methods::getInstallationProgress, "getInstallationProgress");
    EXPECT_STREQ(Methods::startFinalization, "startFinalization");
    EXPECT_STREQ(Methods::getFinalizationProgress, "getFinalizationProgress");
    EXPECT_STREQ(Methods::cancelCoreTransaction, "cancelCoreTransaction");
}

TEST(DBUSNames, OfTheMethodsOfTheScheduler) {
    using namespace DBUSIOTAScheduler;
    EXPECT_STREQ(Methods::registerSchedules, "registerSchedules");
    EXPECT_STREQ(Methods::registerImmediateStandbyUpgrade, "registerImmediateStandbyUpgrade");
    EXPECT_STREQ(Methods::getActiveSchedule, "getActiveSchedule");
    EXPECT_STREQ(Methods::getClosestSchedule, "getClosestSchedule");
    EXPECT_STREQ(Methods::removeSchedule, "removeSchedule");
    EXPECT_STREQ(Methods::removeScheduleGroup, "removeScheduleGroup");
    EXPECT_STREQ(Methods::removeAllSchedules, "removeAllSchedules");
}

} // namespace
