#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CoreInterface/ICore.h"
#include "DAXCommon/ServiceClientPriority.h"
#include "DAXCommon/ServiceTransactionType.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "support/DebugParameters.h"
#include "support/FakeCore.h"
#include "support/FakeKovan.h"
#include "support/FakePowerMode.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {

const char PRIORITY_KEY[] = "memory/menu/support/softwareupdate/currentServiceClientPriority";
const char LOCK_KEY[] = "memory/menu/support/softwareupdate/isExternalLockAcquired";
const char RELEASED_KEY[] = "memory/menu/support/softwareupdate/isInstallationLockReleased";

inline std::string write(const std::string& key, int value) {
    return "write " + key + "=" + std::to_string(value);
}

inline DAXCommon::ServiceClientPriority rank(int value) {
    return static_cast<DAXCommon::ServiceClientPriority>(value);
}
inline DAXCommon::ServiceTransactionType purpose(int value) {
    return static_cast<DAXCommon::ServiceTransactionType>(value);
}

// The service logic over a fake core ("core <call>" in the journal), fake power events ("power <what>"), the platform
// in memory, and a root of its own in which the data partition exists.
class ServiceFixture : public ::testing::Test {
protected:
    ServiceFixture() {
        std::filesystem::create_directories(Platform::IProductPaths::getDAXPartitionPath().string());
        script->observer = [](const std::string& call) { FakeKovan::note("core " + call); };
        power->observer = [](const std::string& what) { FakeKovan::note("power " + what); };
        FakeKovan::forgetRecords();
    }

    // The side effects since the last `forget`.
    std::vector<std::string> journal() const {
        const std::vector<std::string> all = FakeKovan::journal();
        return std::vector<std::string>(all.begin() + static_cast<std::ptrdiff_t>(m_forgotten), all.end());
    }

    // All that was logged at this level, as one text, since a long message has more than one line.
    static std::string logged(const std::string& level) {
        std::string text;
        for (const std::string& message : FakeKovan::messages(level)) {
            text += message + "\n";
        }
        return text;
    }

    void forget() { m_forgotten = FakeKovan::journal().size(); }

    std::string lockPath() const { return Platform::IProductPaths::getInstallationLockPath().string(); }

    const TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    DebugParameters debugParameters;
    const std::shared_ptr<FakeCoreScript> script = std::make_shared<FakeCoreScript>();
    const std::shared_ptr<FakePowerModeScript> power = std::make_shared<FakePowerModeScript>();
    std::shared_ptr<Core::ICore> core = std::make_shared<FakeCore>(script);

private:
    std::size_t m_forgotten = 0;
};

} // namespace DAX::Tests
