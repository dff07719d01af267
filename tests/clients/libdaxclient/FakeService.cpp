#include "FakeService.h"

#include <chrono>
#include <stdexcept>
#include <utility>

#include "support/ServiceContract.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {

namespace {

const char* const SERVICE = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager::CONNECTION_NAME;
const std::string DONE = "22 serialization::archive 18 0 0 2 100 0 1 0";

RawMessage replyOf(DBusMessage& call, const std::vector<std::string>& arrays) {
    RawMessage reply(dbus_message_new_method_return(&call));
    for (const std::string& array : arrays) {
        appendBytes(*reply, array);
    }
    return reply;
}

} // namespace

FakeService::FakeService() : m_name(m_peer.name()) {
    if (m_peer.requestName(SERVICE) != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER) {
        throw std::runtime_error("the service's name is taken");
    }
    for (const ServiceMethod& method : serviceMethods()) {
        answerWell(method.name);
    }
    m_thread = std::thread([this] { run(); });
}

FakeService::~FakeService() {
    m_stop = true;
    m_thread.join();
}

void FakeService::answer(const std::string& method, Answer answer) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_answers[method] = std::move(answer);
}

void FakeService::answerWell(const std::string& method) {
    const bool isProgress = method.find("Progress") != std::string::npos;
    answer(method, archive(isProgress ? DONE : golden("service/" + method + ".reply")));
}

void FakeService::leaveAt(const std::string& method) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_leavesAt = method;
}

std::vector<std::string> FakeService::callsOf(const std::string& method) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls[method];
}

bool FakeService::waitForCall(const std::string& method) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_called.wait_for(lock, RawPeer::DEFAULT_BOUND, [&] { return !m_calls[method].empty(); });
}

FakeService::Answer FakeService::arrays(const std::vector<std::string>& arrays) {
    return [arrays](DBusMessage& call) { return replyOf(call, arrays); };
}

FakeService::Answer FakeService::archive(const std::string& archive) {
    return [archive](DBusMessage& call) { return replyOf(call, {"REPLY", dbus_message_get_member(&call), archive}); };
}

FakeService::Answer FakeService::exception(const std::string& name, const std::string& archive) {
    return arrays({"EXCEPTION", name, archive});
}

FakeService::Answer FakeService::error(const std::string& name, const std::string& text) {
    return [name, text](DBusMessage& call) {
        return RawMessage(dbus_message_new_error(&call, name.c_str(), text.c_str()));
    };
}

FakeService::Answer FakeService::nothing() {
    return [](DBusMessage&) { return RawMessage(); };
}

RawMessage FakeService::answerTo(DBusMessage& call) {
    const std::string method = dbus_message_get_member(&call);
    const std::vector<std::string> arguments = byteArrays(call);
    Answer answer;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_calls[method].push_back(arguments.empty() ? "" : arguments.front());
        m_called.notify_all();
        m_hasLeft = method == m_leavesAt;
        answer = m_answers[method];
    }
    return m_hasLeft ? RawMessage() : answer(call);
}

void FakeService::run() {
    while (!m_stop && !m_hasLeft && dbus_connection_read_write(m_peer.connection(), 10)) {
        while (const RawMessage message{dbus_connection_pop_message(m_peer.connection())}) {
            if (dbus_message_get_type(message.get()) != DBUS_MESSAGE_TYPE_METHOD_CALL) {
                continue;
            }
            if (const RawMessage reply = answerTo(*message)) {
                m_peer.send(*reply);
            }
            if (m_hasLeft) {
                m_peer.disconnect();
                return;
            }
        }
    }
}

} // namespace DAX::Tests
