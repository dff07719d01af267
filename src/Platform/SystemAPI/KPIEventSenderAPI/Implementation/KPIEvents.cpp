#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEvents.h"

#include <sstream>
#include <utility>

namespace DAX::Platform::KpiEvent {
namespace {

template <class... Parts>
std::string textOf(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

char infoType(int type) {
    switch (type) {
    case 0:
        return 'd';
    case 2:
        return 'o';
    default:
        return 'e';
    }
}

} // namespace

IKPIEvent::IKPIEvent(std::string code, std::string name) : m_code(std::move(code)), m_name(std::move(name)) {}

CInfoEvent::CInfoEvent(bool au, int cp, int type) : IKPIEvent("EV001", "INFO"), m_au(au), m_cp(cp), m_type(type) {}

std::string CInfoEvent::getDescription() const {
    return textOf("{au=", m_au, ";cp=", m_cp, ";ty=", infoType(m_type), "}");
}

COSDShowEvent::COSDShowEvent(NotificationType type) : IKPIEvent("EV005", "OSDSHOW"), m_type(type) {}

std::string COSDShowEvent::getDescription() const {
    return textOf("{ty=", m_type, "}");
}

COSDInputEvent::COSDInputEvent(InputType input, OsdType type)
    : IKPIEvent("EV006", "OSDINPUT"), m_input(input), m_type(type) {}

std::string COSDInputEvent::getDescription() const {
    return textOf("{in=", m_input, ";ty=", m_type, "}");
}

COSUEvent::COSUEvent(UserInput input, OSDTypeOSU type, AllChangesStatus ac, AllChangesStatus nc, AllChangesStatus wc)
    : IKPIEvent("EV007", "OSU"), m_input(input), m_type(type), m_ac(ac), m_nc(nc), m_wc(wc) {}

std::string COSUEvent::getDescription() const {
    return textOf("{in=", m_input, ";ty=", m_type, ";ac=", m_ac, ";nc=", m_nc, ";wc=", m_wc, "}");
}

CErrorEvent::CErrorEvent(std::string file, std::string function, std::string line, std::string expression,
                         std::string message)
    : IKPIEvent("EV008", "ERROR")
    , m_file(std::move(file))
    , m_function(std::move(function))
    , m_line(std::move(line))
    , m_expression(std::move(expression))
    , m_message(std::move(message)) {}

std::string CErrorEvent::getDescription() const {
    return textOf("{file=", m_file, ";func=", m_function, ";line=", m_line, ";expr=", m_expression, ";msg=", m_message,
                  "}");
}

} // namespace DAX::Platform::KpiEvent
