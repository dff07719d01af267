#pragma once

#include <string>
#include <utility>
#include <vector>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "monitor/BusEvent.h"
#include "monitor/BusMessage.h"
#include "support/WireGoldens.h"

// Messages as they would come from a bus, and what is made of them as lines.
namespace DAX::Tests {

inline const std::string H = "22 serialization::archive 18";
inline const std::int64_t START = 1700000000000000; // 2023-11-14T22:13:20Z

class BusStory {
public:
    explicit BusStory(std::string caller = ":1.5") : m_caller(std::move(caller)) {}

    // The next message comes so many microseconds after the one before.
    std::int64_t pace = 1000;

    monitor::BusMessage call(const std::string& method, const std::string& archive, bool toCore = false) {
        monitor::BusMessage message = next(monitor::BusMessage::Type::CALL);
        message.serial = ++m_serial;
        message.sender = m_caller;
        message.destination = toCore ? "org.kovan.tv.dax.core.TV" : "org.kovan.tv.dax.service.servicemanager";
        message.path = toCore ? "/org/kovan/tv/dax/core/ccoreTV" : "/org/kovan/tv/dax/service/cservicemanager";
        message.member = method;
        message.arguments = {{'b', archive, 0}};
        return message;
    }
    monitor::BusMessage reply(const std::string& kind, const std::string& name, const std::string& archive) {
        monitor::BusMessage message = answer(monitor::BusMessage::Type::REPLY);
        message.arguments = {{'b', kind, 0}, {'b', name, 0}, {'b', archive, 0}};
        return message;
    }
    monitor::BusMessage error(const std::string& name, const std::string& text) {
        monitor::BusMessage message = answer(monitor::BusMessage::Type::ERROR);
        message.sender = "org.freedesktop.DBus";
        message.error = name;
        message.arguments = {{'s', text, 0}};
        return message;
    }
    monitor::BusMessage ownerChanged(const std::string& name, const std::string& from, const std::string& to,
                                     const std::string& sender = "org.freedesktop.DBus") {
        monitor::BusMessage message = next(monitor::BusMessage::Type::SIGNAL);
        message.sender = sender;
        message.member = "NameOwnerChanged";
        message.arguments = {{'s', name, 0}, {'s', from, 0}, {'s', to, 0}};
        return message;
    }
    void speakAs(const std::string& caller) { m_caller = caller; }

private:
    monitor::BusMessage next(monitor::BusMessage::Type type) {
        monitor::BusMessage message;
        message.type = type;
        message.time = m_time;
        m_time += pace;
        return message;
    }
    monitor::BusMessage answer(monitor::BusMessage::Type type) {
        monitor::BusMessage message = next(type);
        message.sender = ":1.2";
        message.destination = m_caller;
        message.replySerial = m_serial;
        return message;
    }

    std::string m_caller;
    std::uint32_t m_serial = 0;
    std::int64_t m_time = START;
};

// A process for each connection.
class ProcessOfEach : public monitor::Processes {
public:
    std::optional<monitor::Process> processOf(const std::string&) override { return monitor::Process{42, "updater"}; }
};

// Keeps copies of all events.
class KeptEvents : public monitor::EventSink {
public:
    void onCall(const monitor::CallEvent& call) override { calls.push_back(call); }
    void onAnswer(const monitor::CallEvent& call, const monitor::AnswerEvent& answer) override {
        answers.emplace_back(call, answer);
    }
    void onOwner(const monitor::OwnerEvent& change) override { owners.push_back(change); }
    void onNote(const monitor::NoteEvent& note) override { notes.push_back(note); }

    std::vector<monitor::CallEvent> calls;
    std::vector<std::pair<monitor::CallEvent, monitor::AnswerEvent>> answers;
    std::vector<monitor::OwnerEvent> owners;
    std::vector<monitor::NoteEvent> notes;
};

} // namespace DAX::Tests
