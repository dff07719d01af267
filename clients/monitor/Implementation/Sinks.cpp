#include "monitor/Sinks.h"

namespace monitor {

void SinkList::onCall(const CallEvent& call) {
    for (EventSink* const sink : m_sinks) {
        sink->onCall(call);
    }
}

void SinkList::onAnswer(const CallEvent& call, const AnswerEvent& answer) {
    for (EventSink* const sink : m_sinks) {
        sink->onAnswer(call, answer);
    }
}

void SinkList::onOwner(const OwnerEvent& change) {
    for (EventSink* const sink : m_sinks) {
        sink->onOwner(change);
    }
}

void SinkList::onNote(const NoteEvent& note) {
    for (EventSink* const sink : m_sinks) {
        sink->onNote(note);
    }
}

bool SinkFilter::concerns(const CallEvent& call) const {
    return m_sides.count(call.side) != 0 && (m_methods.empty() || m_methods.count(call.method) != 0);
}

void SinkFilter::onCall(const CallEvent& call) {
    if (concerns(call)) {
        m_next.onCall(call);
    }
}

void SinkFilter::onAnswer(const CallEvent& call, const AnswerEvent& answer) {
    if (concerns(call)) {
        m_next.onAnswer(call, answer);
    }
}

void SinkFilter::onOwner(const OwnerEvent& change) {
    if (!change.side || m_sides.count(*change.side) != 0) {
        m_next.onOwner(change);
    }
}

void FailureFilter::onAnswer(const CallEvent& call, const AnswerEvent& answer) {
    if (answer.outcome != Outcome::DONE) {
        m_next.onCall(call);
        m_next.onAnswer(call, answer);
    }
}

void FailureFilter::onOwner(const OwnerEvent& change) {
    if (change.side && change.to.empty()) {
        m_next.onOwner(change);
    }
}

} // namespace monitor
