#pragma once

#include <string>

namespace DAX::Platform::KpiEvent {

// One event for the device's reporting service.
class IKPIEvent {
public:
    IKPIEvent(std::string code, std::string name);
    virtual ~IKPIEvent() = default;

    // A short key-value text in braces, the fields separated by ";".
    virtual std::string getDescription() const = 0;

    const std::string& getCode() const { return m_code; }
    const std::string& getName() const { return m_name; }

private:
    std::string m_code;
    std::string m_name;
};

// Sends the event and blocks until the reporting service has it. A refusal is only logged. Any thread may call.
void sendKPIEventToServer(const IKPIEvent& event);

} // namespace DAX::Platform::KpiEvent
