#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEvents.h"

#include <utility>

namespace DAX {
namespace Platform {
namespace KpiEvent {

IKPIEvent::IKPIEvent(std::string code, std::string name) : m_code(std::move(code)), m_name(std::move(name)) {}

CErrorEvent::CErrorEvent(std::string file, std::string function, std::string line, std::string expression,
                         std::string message)
    : IKPIEvent("EV008", "ERROR")
    , m_file(std::move(file))
    , m_function(std::move(function))
    , m_line(std::move(line))
    , m_expression(std::move(expression))
    , m_message(std::move(message)) {}

std::string CErrorEvent::getDescription() const {
    return "{file=" + m_file + ";func=" + m_function + ";line=" + m_line + ";expr=" + m_expression +
           ";msg=" + m_message + "}";
}

} // namespace KpiEvent
} // namespace Platform
} // namespace DAX
