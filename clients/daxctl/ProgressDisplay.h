#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "dax/client.h"

namespace daxctl {

// How a progress is shown.
enum class ProgressStyle {
    AUTO,  // BAR on a terminal, PLAIN elsewhere
    BAR,   // a bar that is redrawn
    PLAIN, // a line at the beginning and one at the end
    JSON,  // a line for each change: an object with "step", "state", "percent" and "detail"
    NONE
};

// How and where it is shown.
struct ProgressOutput {
    ProgressStyle style = ProgressStyle::AUTO;
    std::FILE* stream = stderr;
};

// Shows how far one step has come.
class ProgressDisplay {
public:
    ProgressDisplay(std::string step, const ProgressOutput& output);
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

    // Ends the line of an unfinished bar, so that the next output has a line of its own.
    ~ProgressDisplay();

    void show(const dax::Progress& progress);

    // The step has ended: `outcome` is added to what was last shown.
    void finish(const std::string& outcome);

private:
    void drawBar(const std::string& behind) const;
    void writeJson(const std::string& state);

    std::string m_step;
    std::FILE* m_stream;
    ProgressStyle m_style; // never AUTO
    int m_percent = -1;
    std::optional<float> m_detail;
    std::string m_lastLine;    // of JSON
    bool m_isLineOpen = false; // the last output was a bar without a line end
};

} // namespace daxctl
