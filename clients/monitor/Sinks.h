#pragma once

#include <set>
#include <string>
#include <vector>

#include "monitor/BusEvent.h"

namespace monitor {

// Passes every event on to all of these, which outlive it.
class SinkList : public EventSink {
public:
    void add(EventSink& sink) { m_sinks.push_back(&sink); }

    void onCall(const CallEvent& call) override;
    void onAnswer(const CallEvent& call, const AnswerEvent& answer) override;
    void onOwner(const OwnerEvent& change) override;
    void onNote(const NoteEvent& note) override;

private:
    std::vector<EventSink*> m_sinks;
};

// Passes on what concerns these sides and methods; all methods when there are none. Changes of owners and callers that
// leave pass, as far as they concern the sides.
class SinkFilter : public EventSink {
public:
    SinkFilter(EventSink& next, std::set<Side> sides, std::set<std::string> methods)
        : m_next(next), m_sides(std::move(sides)), m_methods(std::move(methods)) {}

    void onCall(const CallEvent& call) override;
    void onAnswer(const CallEvent& call, const AnswerEvent& answer) override;
    void onOwner(const OwnerEvent& change) override;
    void onNote(const NoteEvent& note) override { m_next.onNote(note); }

private:
    bool concerns(const CallEvent& call) const;

    EventSink& m_next;
    std::set<Side> m_sides;
    std::set<std::string> m_methods;
};

// Passes on refusals and failures, each with its call right before it, services and cores that end, and notes.
class FailureFilter : public EventSink {
public:
    explicit FailureFilter(EventSink& next) : m_next(next) {}

    void onCall(const CallEvent&) override {}
    void onAnswer(const CallEvent& call, const AnswerEvent& answer) override;
    void onOwner(const OwnerEvent& change) override;
    void onNote(const NoteEvent& note) override { m_next.onNote(note); }

private:
    EventSink& m_next;
};

} // namespace monitor
