#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/RawPeer.h"

namespace DAX::Tests {

// A service on the private bus that a test scripts. Without a script it answers each of the 23 methods with a good
// reply: it grants every session, transaction and lock (number 1), and every step has just ended well.
//
// Any thread may use it.
class FakeService {
public:
    // The reply; empty for none.
    using Answer = std::function<RawMessage(DBusMessage& call)>;

    FakeService();
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;
    ~FakeService();

    // From now on the method is answered like this.
    void answer(const std::string& method, Answer answer);
    void answerWell(const std::string& method);

    // The service leaves the bus instead of an answer.
    void leaveAt(const std::string& method);
    bool hasLeft() const { return m_hasLeft; }

    // The archives of the calls of the method so far, oldest first.
    std::vector<std::string> callsOf(const std::string& method);
    bool waitForCall(const std::string& method);

    // Its unique name.
    std::string name() const { return m_name; }

    // Answers.
    static Answer arrays(const std::vector<std::string>& arrays);
    static Answer archive(const std::string& archive);
    static Answer exception(const std::string& name, const std::string& archive);
    static Answer error(const std::string& name, const std::string& text);
    static Answer nothing();

private:
    void run();
    RawMessage answerTo(DBusMessage& call);

    RawPeer m_peer;
    const std::string m_name;

    std::mutex m_mutex; // guards all below, but for the atomic ones and the thread
    std::condition_variable m_called;
    std::map<std::string, Answer> m_answers;
    std::map<std::string, std::vector<std::string>> m_calls;
    std::string m_leavesAt;

    std::atomic<bool> m_hasLeft{false};
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

} // namespace DAX::Tests
