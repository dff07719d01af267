#pragma once

#include <string>

#include "dax/client.h"

namespace daxctl {

// Shows on standard error how far one step has come: on a terminal a bar that is redrawn, elsewhere a plain line at the
// beginning and at the end, and nothing when it is silent.
class ProgressDisplay {
public:
    ProgressDisplay(std::string step, bool silent);
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

    // Ends the line of an unfinished bar, so that the next output has a line of its own.
    ~ProgressDisplay();

    void show(const dax::Progress& progress);

    // The step has ended: `outcome` is added to what was last shown.
    void finish(const std::string& outcome);

private:
    enum class Style { SILENT, LINES, BAR };

    void drawBar(const std::string& behind) const;

    std::string m_step;
    Style m_style;
    int m_percent = -1;
    bool m_isLineOpen = false; // the last output was a bar without a line end
};

} // namespace daxctl
