#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "monitor/Diagram.h"
#include "monitor/Implementation/DiagramLifelines.h"
#include "monitor/Implementation/DiagramRows.h"

namespace monitor {

// The drawing of a Diagram: where its lifelines and rows stand, and how they look.
class DiagramDrawing {
public:
    using Step = Diagram::Step;

    // The steps outlive it.
    DiagramDrawing(const std::vector<Step>& steps, const std::map<std::string, Caller>& callers, bool toScale);

    void write(std::ostream& out, std::size_t leftOut) const;

private:
    void place(bool toScale);

    double lifeline(const Step& step) const;
    double xOfService() const;
    double xOfCore() const;
    double width() const;
    double height() const;

    void writeLifelines(std::ostream& out) const;
    void writeSessions(std::ostream& out) const;
    void writeRow(std::ostream& out, const DiagramRow& row) const;
    void writeCall(std::ostream& out, const DiagramRow& row, const Step& step) const;
    void writeChange(std::ostream& out, const DiagramRow& row, const Step& step) const;

    DiagramLifelines m_lifelines;
    std::vector<DiagramRow> m_rows;
};

} // namespace monitor
