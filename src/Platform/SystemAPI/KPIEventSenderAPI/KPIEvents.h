#pragma once

#include <ostream>
#include <string>

#include "Platform/SystemAPI/KPIEventSenderAPI/IKPIEvent.h"
#include "Platform/SystemAPI/KPIEventSenderAPI/KPIEventCodes.h"

namespace DAX::Platform::KpiEvent {

// "EV001", "INFO".
class CInfoEvent : public IKPIEvent {
public:
    // The type is written as "d" for 0, "o" for 2 and "e" for any other value.
    CInfoEvent(bool au, int cp, int type);

    std::string getDescription() const override;

private:
    bool m_au;
    int m_cp;
    int m_type;
};

// "EV005", "OSDSHOW": a notification was shown.
class COSDShowEvent : public IKPIEvent {
public:
    explicit COSDShowEvent(NotificationType type);

    std::string getDescription() const override;

private:
    NotificationType m_type;
};

// "EV006", "OSDINPUT": the user answered a notification.
class COSDInputEvent : public IKPIEvent {
public:
    COSDInputEvent(InputType input, OsdType type);

    std::string getDescription() const override;

private:
    InputType m_input;
    OsdType m_type;
};

// "EV007", "OSU": the user's input on a screen of the given type.
class COSUEvent : public IKPIEvent {
public:
    // Named and written like the enumerations of KPIEventCodes.h.
    enum class UserInput : int { TI = 0, LA = 1, NO = 2, WO = 3 };
    enum class OSDTypeOSU : int { GO = 0, DE = 1, MA = 2, US = 3 };
    enum class AllChangesStatus : int { NA = 0, NO = 1, BE = 2, SC = 3, EN = 4 };

    COSUEvent(UserInput input, OSDTypeOSU type, AllChangesStatus ac, AllChangesStatus nc, AllChangesStatus wc);

    std::string getDescription() const override;

private:
    UserInput m_input;
    OSDTypeOSU m_type;
    AllChangesStatus m_ac;
    AllChangesStatus m_nc;
    AllChangesStatus m_wc;
};

std::ostream& operator<<(std::ostream& stream, COSUEvent::UserInput input);
std::ostream& operator<<(std::ostream& stream, COSUEvent::OSDTypeOSU type);
std::ostream& operator<<(std::ostream& stream, COSUEvent::AllChangesStatus status);

// "EV008", "ERROR": an assertion has failed.
class CErrorEvent : public IKPIEvent {
public:
    CErrorEvent(std::string file, std::string function, std::string line, std::string expression, std::string message);

    std::string getDescription() const override;

private:
    std::string m_file;
    std::string m_function;
    std::string m_line;
    std::string m_expression;
    std::string m_message;
};

} // namespace DAX::Platform::KpiEvent
