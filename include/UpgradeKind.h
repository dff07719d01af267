#pragma once

namespace DAX::DAXCommon {

// How urgent a found upgrade is. There are only these two values.
enum UpgradeKind : unsigned int { UPGRADE_KIND_REGULAR = 0, UPGRADE_KIND_IMPORTANT = 1 };

// Writes the low 8 bits as an unsigned number, without class information.
template <class OutArchive>
void saveUpgradeKind(OutArchive& archive, UpgradeKind kind);

// Reads an unsigned short and keeps its low 8 bits. Throws GenericException when they are greater than 1; `kind` then
// stays.
template <class InArchive>
void loadUpgradeKind(InArchive& archive, UpgradeKind& kind);

// For a record's `serialize`: saves or loads, as the archive does.
template <class Archive>
void serializeUpgradeKind(Archive& archive, UpgradeKind& kind) {
    if constexpr (Archive::is_saving::value) {
        saveUpgradeKind(archive, kind);
    } else {
        loadUpgradeKind(archive, kind);
    }
}

} // namespace DAX::DAXCommon
