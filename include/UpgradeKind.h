#pragma once

namespace DAX::DAXCommon {

// What sort of upgrade was found. Two values only.
enum UpgradeKind : unsigned int { UPGRADE_KIND_REGULAR = 0, UPGRADE_KIND_IMPORTANT = 1 };

// The value on the wire: the low 8 bits as an unsigned number, with no class information.
template <class OutArchive>
void saveUpgradeKind(OutArchive& archive, UpgradeKind kind);

// Reads an unsigned short and keeps its low 8 bits. Throws GenericException when they are greater than 1.
template <class InArchive>
void loadUpgradeKind(InArchive& archive, UpgradeKind& kind);

// The one of the two that the archive is for, in a record's `serialize`.
template <class Archive>
void serializeUpgradeKind(Archive& archive, UpgradeKind& kind) {
    if constexpr (Archive::is_saving::value) {
        saveUpgradeKind(archive, kind);
    } else {
        loadUpgradeKind(archive, kind);
    }
}

} // namespace DAX::DAXCommon
