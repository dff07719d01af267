#pragma once

#include <ostream>

namespace DAX::Platform::KpiEvent {

// What events carry. A value has the name of the short code that operator<< writes for it, in upper case. A value
// without a name is written as "f" for a SearchMethod, as "na" for a NotificationType and as "er" for the others.

enum class SearchMethod : int { M = 0, B = 1, O = 2, E = 3 };
enum class UpdateMethod : int { FO = 1, AU = 2, GO = 3, ES = 4, MA = 5, EX = 6, OB = 7 };
enum class NotificationType : int { CO = 0, OK = 1, FA = 2, SK = 3 };
enum class InputType : int { NO = 1, LA = 2, DO = 3, TI = 4, OK = 5, DE = 6, IG = 7 };
enum class OsdType : int { GO = 0, DE = 1 };

std::ostream& operator<<(std::ostream& stream, SearchMethod method);
std::ostream& operator<<(std::ostream& stream, UpdateMethod method);
std::ostream& operator<<(std::ostream& stream, NotificationType type);
std::ostream& operator<<(std::ostream& stream, InputType type);
std::ostream& operator<<(std::ostream& stream, OsdType type);

} // namespace DAX::Platform::KpiEvent
