#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEventCodes.h"

#include <array>
#include <cstddef>

#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEvents.h"

namespace DAX::Platform::KpiEvent {
namespace {

// The codes of an enumeration's values, in a row that starts with the value `first`, and the code of any other value.
template <std::size_t COUNT>
struct Codes {
    int first;
    std::array<const char*, COUNT> codes;
    const char* other;

    template <class Enumeration>
    const char* of(Enumeration value) const {
        const long long index = static_cast<long long>(value) - first;
        return index >= 0 && index < static_cast<long long>(COUNT) ? codes[static_cast<std::size_t>(index)] : other;
    }
};

const Codes<4> SEARCH_METHODS{0, {"m", "b", "o", "e"}, "f"};
const Codes<7> UPDATE_METHODS{1, {"fo", "au", "go", "es", "ma", "ex", "ob"}, "er"};
const Codes<4> NOTIFICATION_TYPES{0, {"co", "ok", "fa", "sk"}, "na"};
const Codes<7> INPUT_TYPES{1, {"no", "la", "do", "ti", "ok", "de", "ig"}, "er"};
const Codes<2> OSD_TYPES{0, {"go", "de"}, "er"};
const Codes<4> USER_INPUTS{0, {"ti", "la", "no", "wo"}, "er"};
const Codes<4> OSU_OSD_TYPES{0, {"go", "de", "ma", "us"}, "er"};
const Codes<5> ALL_CHANGES_STATUSES{0, {"na", "no", "be", "sc", "en"}, "er"};

} // namespace

std::ostream& operator<<(std::ostream& stream, SearchMethod method) {
    return stream << SEARCH_METHODS.of(method);
}

std::ostream& operator<<(std::ostream& stream, UpdateMethod method) {
    return stream << UPDATE_METHODS.of(method);
}

std::ostream& operator<<(std::ostream& stream, NotificationType type) {
    return stream << NOTIFICATION_TYPES.of(type);
}

std::ostream& operator<<(std::ostream& stream, InputType type) {
    return stream << INPUT_TYPES.of(type);
}

std::ostream& operator<<(std::ostream& stream, OsdType type) {
    return stream << OSD_TYPES.of(type);
}

std::ostream& operator<<(std::ostream& stream, COSUEvent::UserInput input) {
    return stream << USER_INPUTS.of(input);
}

std::ostream& operator<<(std::ostream& stream, COSUEvent::OSDTypeOSU type) {
    return stream << OSU_OSD_TYPES.of(type);
}

std::ostream& operator<<(std::ostream& stream, COSUEvent::AllChangesStatus status) {
    return stream << ALL_CHANGES_STATUSES.of(status);
}

} // namespace DAX::Platform::KpiEvent
