#include "daxctl/ProgressDisplay.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include <nlohmann/json.hpp>
#include <unistd.h>

namespace daxctl {

namespace {

const int BAR_WIDTH = 40;

ProgressStyle chosen(const ProgressOutput& output) {
    if (output.style != ProgressStyle::AUTO) {
        return output.style;
    }
    return isatty(fileno(output.stream)) ? ProgressStyle::BAR : ProgressStyle::PLAIN;
}

std::string inSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return text;
}

} // namespace

ProgressDisplay::ProgressDisplay(std::string step, const ProgressOutput& output)
    : m_step(std::move(step)), m_stream(output.stream), m_style(chosen(output)) {}

ProgressDisplay::~ProgressDisplay() {
    if (m_isLineOpen) {
        std::fputc('\n', m_stream);
    }
}

// The last progress of a step is left to finish(), which knows what it means.
void ProgressDisplay::show(const dax::Progress& progress) {
    const bool first = m_percent < 0;
    m_percent = std::clamp(progress.percent, 0, 100);
    m_detail = progress.detail;
    if (m_style == ProgressStyle::BAR) {
        drawBar("");
        m_isLineOpen = true;
    } else if (m_style == ProgressStyle::PLAIN && first) {
        std::fprintf(m_stream, "%s: started\n", m_step.c_str());
    } else if (m_style == ProgressStyle::JSON && progress.state != dax::State::SUCCEEDED &&
               progress.state != dax::State::FAILED) {
        writeJson("running");
    }
    std::fflush(m_stream);
}

void ProgressDisplay::finish(const std::string& outcome) {
    if (m_style == ProgressStyle::BAR) {
        drawBar(" " + outcome + "\n");
        m_isLineOpen = false;
    } else if (m_style == ProgressStyle::PLAIN) {
        std::fprintf(m_stream, "%s: %s\n", m_step.c_str(), outcome.c_str());
    } else if (m_style == ProgressStyle::JSON) {
        writeJson(outcome);
    }
    std::fflush(m_stream);
}

void ProgressDisplay::drawBar(const std::string& behind) const {
    const int percent = std::max(m_percent, 0);
    const auto filled = static_cast<std::size_t>(percent * BAR_WIDTH / 100);
    const std::string bar = std::string(filled, '#') + std::string(BAR_WIDTH - filled, '.');
    std::fprintf(m_stream, "\r%-13s [%s] %3d %%%s", m_step.c_str(), bar.c_str(), percent, behind.c_str());
}

void ProgressDisplay::writeJson(const std::string& state) {
    const nlohmann::ordered_json detail = m_detail ? nlohmann::ordered_json(*m_detail) : nlohmann::ordered_json();
    const nlohmann::ordered_json line = {
        {"step", inSmallLetters(m_step)}, {"state", state}, {"percent", std::max(m_percent, 0)}, {"detail", detail}};
    if (const std::string text = line.dump(); text != m_lastLine) {
        std::fprintf(m_stream, "%s\n", text.c_str());
        m_lastLine = text;
    }
}

} // namespace daxctl
