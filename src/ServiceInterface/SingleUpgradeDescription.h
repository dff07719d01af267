#pragma once

#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "DAXCommon/UpgradeType.h"
#include "UpgradeKind.h"

namespace DAX::Service {

// One upgrade, as clients see it. The order of the fields is the order on the wire.
struct SingleUpgradeDescription {
    DAXCommon::UpgradeType upgradeType = DAXCommon::UNDEFINED;
    std::vector<unsigned char> upgradeId;  // binary identifier of the upgrade
    boost::optional<std::string> version;  // the target version, or "WOC_ONLY_VERSION"
    std::vector<unsigned char> updateInfo; // the upgrade's information document, raw bytes
    DAXCommon::UpgradeKind kind = DAXCommon::UPGRADE_KIND_REGULAR;
    int scope = 0;

    // Calls visit(name, field) for each field, in the order on the wire.
    template <class Record, class Visit>
    static void forEachField(Record& record, const Visit& visit) {
        visit("upgradeType", record.upgradeType);
        visit("upgradeId", record.upgradeId);
        visit("version", record.version);
        visit("updateInfo", record.updateInfo);
        visit("kind", record.kind);
        visit("scope", record.scope);
    }

    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
};

} // namespace DAX::Service
