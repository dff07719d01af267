#include "daxctl/MonitorReport.h"

#include <cerrno>
#include <cstring>

#include <nlohmann/json.hpp>

#include "clients_common/CommandLine.h"

namespace daxctl {

MonitorReport::MonitorReport(const MonitorOptions& options, bool json, LongOutput& output)
    : m_options(options)
    , m_isJson(json)
    , m_output(output)
    , m_text(output.stream(), LongOutput::isColourful(), LongOutput::width)
    , m_json(output.stream())
    , m_failures(m_isJson ? static_cast<monitor::EventSink&>(m_json) : m_text)
    , m_filter(m_all, options.sides(), options.methods) {
    m_all.add(options.failures ? static_cast<monitor::EventSink&>(m_failures)
              : json           ? static_cast<monitor::EventSink&>(m_json)
                               : m_text);
    m_all.add(m_summary);
    if (!options.diagramPath.empty()) {
        m_all.add(m_diagram);
        check(std::ofstream(options.diagramPath, std::ios::app)); // now, not after hours of watching
    }
}

void MonitorReport::finish() {
    if (!m_options.diagramPath.empty()) {
        draw();
    }
    if (m_isJson) {
        m_json.write(m_summary.toJson());
    } else {
        m_output.stream() << "\n";
        m_summary.print(m_output.stream());
    }
    show();
}

void MonitorReport::draw() const {
    std::ofstream file(m_options.diagramPath);
    m_diagram.write(file, m_options.toScale ? monitor::Diagram::Scale::TIME : monitor::Diagram::Scale::COMPRESSED);
    file.flush();
    check(file);
}

void MonitorReport::check(const std::ofstream& picture) const {
    if (!picture) {
        throw clients_common::Refusal(m_options.diagramPath + ": " + std::strerror(errno));
    }
}

} // namespace daxctl
