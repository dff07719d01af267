#include "monitor/Implementation/DiagramLifelines.h"

#include "clients_common/Printable.h"

namespace monitor {

namespace {

using clients_common::printable;

const std::size_t MOST_CLIENTS = 6;

// Connections that are one client to a reader have the same: those of a process, or of the name that a client has
// given.
std::string identityOf(const Caller& caller) {
    if (caller.process) {
        return "process " + std::to_string(caller.process->pid);
    }
    return caller.client.empty() ? "connection " + caller.connection : "client " + caller.client;
}

std::string describeProcess(const Caller& caller) {
    if (!caller.process) {
        return caller.client.empty() ? "" : "client";
    }
    return (caller.process->name.empty() ? "process" : printable(caller.process->name, 16)) + " " +
           std::to_string(caller.process->pid);
}

} // namespace

// From left to right as they come.
DiagramLifelines::DiagramLifelines(const std::vector<Diagram::Step>& steps,
                                   const std::map<std::string, Caller>& callers) {
    std::map<std::string, std::size_t> byIdentity;
    for (const Diagram::Step& step : steps) {
        const auto caller = callers.find(step.connection);
        if (caller != callers.end() && !has(step)) {
            assign(caller->second, byIdentity);
        }
    }
    if (m_heads.empty()) {
        m_heads.push_back({"client", ""});
    }
}

void DiagramLifelines::assign(const Caller& caller, std::map<std::string, std::size_t>& byIdentity) {
    const auto [found, isNew] = byIdentity.emplace(identityOf(caller), m_heads.size());
    if (isNew && m_heads.size() == MOST_CLIENTS) {
        found->second = MOST_CLIENTS - 1;
        m_heads.back() = {"others", ""};
    } else if (isNew) {
        m_heads.push_back({caller.connection, describeProcess(caller)});
    }
    m_byConnection[caller.connection] = found->second;
    if (!caller.client.empty() && m_heads[found->second].client != "others") {
        m_heads[found->second].client = printable(caller.client, 16);
    }
}

std::size_t DiagramLifelines::of(const Diagram::Step& step) const {
    const auto client = m_byConnection.find(step.connection);
    return client == m_byConnection.end() ? 0 : client->second;
}

} // namespace monitor
