#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "monitor/Diagram.h"

namespace monitor {

// Which client of a Diagram has which lifeline. There is one at least; the last one is for all clients for whom there
// is no room.
class DiagramLifelines {
public:
    // What is written at the head of one.
    struct Head {
        std::string client;
        std::string process; // may be empty
    };

    DiagramLifelines(const std::vector<Diagram::Step>& steps, const std::map<std::string, Caller>& callers);

    // From left to right.
    const std::vector<Head>& heads() const { return m_heads; }

    // The index of the lifeline; 0 for a step that has none.
    std::size_t of(const Diagram::Step& step) const;

    // Whether the step is one of a client.
    bool has(const Diagram::Step& step) const { return m_byConnection.count(step.connection) != 0; }

private:
    void assign(const Caller& caller, std::map<std::string, std::size_t>& byIdentity);

    std::map<std::string, std::size_t> m_byConnection;
    std::vector<Head> m_heads;
};

} // namespace monitor
