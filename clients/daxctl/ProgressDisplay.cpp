#include "daxctl/ProgressDisplay.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace daxctl {

namespace {

const int BAR_WIDTH = 40;

} // namespace

ProgressDisplay::ProgressDisplay(std::string step, bool silent)
    : m_step(std::move(step))
    , m_style(silent                  ? Style::SILENT
              : isatty(STDERR_FILENO) ? Style::BAR
                                      : Style::LINES) {}

ProgressDisplay::~ProgressDisplay() {
    if (m_isLineOpen) {
        std::fputc('\n', stderr);
    }
}

void ProgressDisplay::show(const dax::Progress& progress) {
    const bool first = m_percent < 0;
    m_percent = std::clamp(progress.percent, 0, 100);
    if (m_style == Style::BAR) {
        drawBar("");
        m_isLineOpen = true;
    } else if (m_style == Style::LINES && first) {
        std::fprintf(stderr, "%s: started\n", m_step.c_str());
    }
}

void ProgressDisplay::finish(const std::string& outcome) {
    if (m_style == Style::BAR) {
        drawBar(" " + outcome + "\n");
        m_isLineOpen = false;
    } else if (m_style == Style::LINES) {
        std::fprintf(stderr, "%s: %s\n", m_step.c_str(), outcome.c_str());
    }
}

void ProgressDisplay::drawBar(const std::string& behind) const {
    const int percent = std::max(m_percent, 0);
    const auto filled = static_cast<std::size_t>(percent * BAR_WIDTH / 100);
    const std::string bar = std::string(filled, '#') + std::string(BAR_WIDTH - filled, '.');
    std::fprintf(stderr, "\r%-13s [%s] %3d %%%s", m_step.c_str(), bar.c_str(), percent, behind.c_str());
    std::fflush(stderr);
}

} // namespace daxctl
