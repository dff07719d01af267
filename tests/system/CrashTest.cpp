// What the daemon finds after a writer was killed at any of its system calls.
#include <filesystem>
#include <iostream>

#include <boost/date_time/posix_time/posix_time_io.hpp>
#include <boost/optional/optional_io.hpp>
#include <gmock/gmock.h>

#include "Common/IO/ChecksumedStream.h"
#include "Common/IO/FileStream.h"
#include "Service/ServiceManager/Implementation/SearchingDateRegister.h"
#include "ServiceInterface/InstallationState.h"
#include "support/CrashPoint.h"
#include "system/support/Desk.h"

namespace DAX::Tests {
namespace {

using namespace DAXCommon;
using Service::ServiceCommon::saveInstallationState;
using Service::ServiceManager::SearchingDateRegister;

const std::string FOLDER = "mnt/systemrw/org.kovan.tv.dax/data/tv/";

// The file's content before: none, or something complete.
class Crash : public testing::TestWithParam<const char*> {
protected:
    bool existedBefore() const { return *GetParam() != '\0'; }

    // Kills the operation at each of its system calls, always from the same beginning, until it comes to its end.
    template <class Operation, class Look>
    void crashEverywhere(const std::string& file, Operation operation, Look look) {
        int point = 0;
        for (bool crashed = true; crashed; ++point) {
            std::filesystem::remove(desk.root / file);
            if (existedBefore()) {
                desk.root.write(file, GetParam());
            }
            crashed = killAtSystemCall(operation, point);
            look(crashed, *desk.connect()); // starts a daemon
            desk.killDaemon();
        }
        std::cout << "points tried: " << point - 1 << "\n";
        EXPECT_GT(point, 5);
    }

    Desk desk;
};

class LockFileCrash : public Crash {
protected:
    bool isVerified() const {
        return Common::IO::ChecksumedStream(std::make_shared<Common::IO::FileStream>(path)).openCheck();
    }

    const std::string path = (desk.root / (FOLDER + "InstallationLock.dat")).string();
};

TEST_P(LockFileCrash, LeavesNoFileOrOneWhoseStateAReaderCanTell) {
    std::filesystem::create_directories(desk.root / FOLDER);
    crashEverywhere(
        FOLDER + "InstallationLock.dat", [this] { saveInstallationState(path, "Type: OTN from: 1 to: 2"); },
        [&](bool crashed, Service::IServiceManager& manager) {
            const bool isThere = std::filesystem::exists(path);
            EXPECT_TRUE(isThere || crashed);
            EXPECT_TRUE(isThere || !existedBefore());
            if (isThere && isVerified()) {
                EXPECT_THAT(desk.root.read(FOLDER + "InstallationLock.dat"), testing::HasSubstr("Type: OTN"));
            }
            EXPECT_TRUE(crashed || isVerified());
            const auto session = manager.getService(ServiceClientPriority(1), "client", ServiceTransactionType(0));
            EXPECT_EQ(session == nullptr, isThere);
        });
}

INSTANTIATE_TEST_SUITE_P(FromNothingAndOverAnother, LockFileCrash, testing::Values("", "an older lock file"));

class DateFileCrash : public Crash {};

TEST_P(DateFileCrash, LeavesTheOldDateOrTheNewOne) {
    const boost::posix_time::ptime before(boost::gregorian::date(2020, 1, 2),
                                          boost::posix_time::time_duration(3, 4, 5));
    crashEverywhere(
        FOLDER + "LastSearchingDate", [] { SearchingDateRegister::getInstance()->registerCurrentDate(); },
        [&](bool crashed, Service::IServiceManager& manager) {
            const auto date = manager.getLastSearchingForUpgradeDate();
            const bool hadDate = std::string(GetParam()) != "";
            EXPECT_TRUE((crashed && !hadDate) || date);
            if (date && *date != before) {
                EXPECT_GT(date->date().year(), 2025);
            }
        });
}

INSTANTIATE_TEST_SUITE_P(FromNothingAndOverAnother, DateFileCrash, testing::Values("", "20200102T030405"));

TEST(CrashOfAWriter, LeavesADaemonThatStarts) {
    Desk desk;
    for (const char* const torn : {"", "\x17", "CHECKSUMED", "2020"}) {
        desk.root.write(FOLDER + "LastSearchingDate", torn);
        desk.root.write(FOLDER + "InstallationLock.dat", torn);
        const auto manager = desk.connect();
        EXPECT_EQ(manager->getLastSearchingForUpgradeDate(), boost::none);
        EXPECT_EQ(manager->getService(ServiceClientPriority(1), "client", ServiceTransactionType(0)), nullptr);
        desk.killDaemon();
    }
}

} // namespace
} // namespace DAX::Tests
