#pragma once

#include <string>

#include "ServiceInterface/ServiceTransactionProgress.h"

namespace daxctl {

// Shows how far one step has come, on standard error: a bar that is redrawn on a terminal, a plain line at the
// beginning and at the end elsewhere, nothing when it is silent.
class ProgressDisplay {
public:
    ProgressDisplay(std::string step, bool silent);
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

    // Ends the line of a bar that has not been finished, so that what comes next stands on one of its own.
    ~ProgressDisplay();

    void show(const DAX::Service::ServiceTransactionProgress& progress);

    // The step has ended: what was last shown stays, and `outcome` stands behind it.
    void finish(const std::string& outcome);

private:
    enum class Style { SILENT, LINES, BAR };

    void drawBar(const std::string& behind) const;

    std::string m_step;
    Style m_style;
    int m_percent = -1;
    bool m_isLineOpen = false; // a bar stands at the end of what was written
};

} // namespace daxctl
