#pragma once

#include "UpgradeKind.h"

namespace DAX::DAXCommon {

// Saves or loads one field, as the archive does.
template <class Archive, class Field>
void serializeField(Archive& archive, Field& field) {
    archive& field;
}
template <class Archive>
void serializeField(Archive& archive, UpgradeKind& kind) {
    serializeUpgradeKind(archive, kind);
}

// For a record's `serialize`: saves or loads the fields in the order of its forEachField.
template <class Archive, class Record>
void serializeFields(Archive& archive, Record& record) {
    Record::forEachField(record, [&archive](const char*, auto& field) { serializeField(archive, field); });
}

} // namespace DAX::DAXCommon
