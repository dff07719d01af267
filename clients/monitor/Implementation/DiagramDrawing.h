#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "monitor/Diagram.h"

namespace monitor {

// The drawing of a Diagram: who has which lifeline, which steps become one row, and where everything stands.
class DiagramDrawing {
public:
    using Step = Diagram::Step;

    DiagramDrawing(const std::vector<Step>& steps, const std::map<std::string, Caller>& callers, bool toScale);

    void write(std::ostream& out, std::size_t leftOut) const;

private:
    // The steps on one height: a call of the service, and the first call of the core that follows from it.
    struct Row {
        std::vector<const Step*> steps;
        std::size_t repetitions = 1;
        std::int64_t begin = 0;
        std::int64_t end = 0;
        double y = 0;
        std::size_t lines = 0; // of explanations below the results
    };
    // A call of the service with all that follows until the next one.
    struct Unit {
        std::vector<Row> rows;
        std::string signature; // the same for units that may become one; empty for one that stands for itself
    };

    std::vector<const Step*> withoutRepeatedLeaving(const std::vector<Step>& steps) const;
    void assignLifelines(const std::vector<Step>& steps, const std::map<std::string, Caller>& callers);
    void assignLifeline(const Caller& caller, std::map<std::string, std::size_t>& byIdentity);
    std::vector<Unit> unitsOf(const std::vector<const Step*>& steps) const;
    void fold(std::vector<Unit> units);
    void place(bool toScale);

    std::size_t clientOf(const Step& step) const;
    double lifeline(const Step& step) const;
    double xOfService() const;
    double xOfCore() const;
    double width() const;
    double height() const;

    void writeHead(std::ostream& out) const;
    void writeLifelines(std::ostream& out) const;
    void writeSessions(std::ostream& out) const;
    void writeRow(std::ostream& out, const Row& row) const;
    void writeCall(std::ostream& out, const Row& row, const Step& step) const;
    void writeChange(std::ostream& out, const Row& row, const Step& step) const;

    std::map<std::string, std::size_t> m_clientOf; // the lifeline of each connection
    std::vector<std::string> m_clients;            // what is written above each
    std::vector<std::string> m_processes;          // and below that
    std::vector<Row> m_rows;
};

} // namespace monitor
