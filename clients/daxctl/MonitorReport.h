#pragma once

#include <fstream>

#include "daxctl/LongOutput.h"
#include "daxctl/MonitorOptions.h"
#include "monitor/Diagram.h"
#include "monitor/JsonView.h"
#include "monitor/Sinks.h"
#include "monitor/Summary.h"
#include "monitor/TextView.h"

namespace daxctl {

// All that `daxctl monitor` makes of the events: what is shown, the summary and the picture.
class MonitorReport {
public:
    // Both outlive it. Throws Refusal when the picture cannot be made; its file is as it was.
    MonitorReport(const MonitorOptions& options, bool json, LongOutput& output);

    // Takes the events.
    monitor::EventSink& sink() { return m_filter; }

    // Writes out what there is to show. False when nobody looks any more. Throws Refusal when it cannot be written.
    bool show() { return m_output.flush(); }

    // The same where nobody may be watching: as soon as enough has come together.
    bool showSome() { return m_output.stream() || show(); }

    // Draws the picture and shows the summary. Throws Refusal when they cannot be written.
    void finish();

private:
    void draw() const;
    void check(const std::ofstream& picture) const;

    const MonitorOptions& m_options;
    bool m_isJson;
    LongOutput& m_output;
    monitor::TextView m_text;
    monitor::JsonView m_json;
    monitor::FailureFilter m_failures;
    monitor::Summary m_summary;
    monitor::Diagram m_diagram;
    monitor::SinkList m_all;
    monitor::SinkFilter m_filter;
};

} // namespace daxctl
