#pragma once

#include <functional>
#include <sstream>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"
#include "DAXCoreSimulator/CallJournal.h"
#include "DAXCoreSimulator/SimulatedCore.h"

namespace DAXCoreSimulator {

// The request handler of the core's object: decodes a call, keeps a record of it, lets the scenario's fault strike,
// calls the simulated core and encodes what it gives back. Lives on the adapter's thread.
class CoreAdapter : public DAX::Common::DBUSWrapper::IDBUSRequestsHandler {
public:
    // Both outlive the adapter.
    CoreAdapter(SimulatedCore& core, const CallJournal& journal) : m_core(core), m_journal(journal) {}

    bool handleRequest(const std::string& method, std::stringstream& in, std::stringstream& out,
                       std::string& exceptionName, const char* sender) override;
    void introspect(std::stringstream& out) override;
    void useThisEventSubscriber(DAX::Common::DBUSWrapper::IDBUSEventsSubscriber&) override {}
    void clientDisconnected(const char*) override {}

    // With which the process ends when the scenario has the core die.
    static constexpr int DEATH_STATUS = 3;

    // True from the reply on behind which the scenario has the core die.
    bool isToDie() const { return m_isToDie; }

private:
    using Record = std::function<void(const nlohmann::ordered_json& arguments)>;

    void serve(const std::string& method, std::stringstream& in, std::stringstream& out, const std::string& sender);
    void answer(const std::string& method, std::stringstream& in, std::stringstream& out, const std::string& sender,
                const Record& record);

    SimulatedCore& m_core;
    const CallJournal& m_journal;
    bool m_isToDie = false;
};

} // namespace DAXCoreSimulator
