#pragma once

#include "UpgradeKind.h"

namespace DAX::DAXCommon {

// For a record's `serialize`: saves or loads one field, as the archive does.
template <class Archive, class Field>
void serializeField(Archive& archive, Field& field) {
    archive& field;
}
template <class Archive>
void serializeField(Archive& archive, UpgradeKind& kind) {
    serializeUpgradeKind(archive, kind);
}

} // namespace DAX::DAXCommon
