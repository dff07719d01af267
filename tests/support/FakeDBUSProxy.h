#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/exception/enable_current_exception.hpp>

#include "Common/DBUSWrapper/IDBUSProxy.h"

namespace DAX::Tests {

// A bus in memory, on which every proxy answers by one script. The proxies are "Proxy-1", "Proxy-2" in the order in
// which they are made, with the connections ":1.1", ":1.2".
//
// Knobs: `reply`, `replyWithException` and `fail` set how a method answers from now on; `nextReply` and `failNext` set
// it for one of the next calls each, in order. A method without a script throws std::logic_error. `failCreate` makes
// every new connection fail, `failInit` every init.
//
// Record: `events()` has a text for each step, in order:
//   "create Proxy-1 <bus> <path> <interface> <activation ms> <call ms>"   "none" for an empty time-out
//   "init Proxy-1 <bus name>", "call Proxy-1 <method>", "drop Proxy-1"
// `parameters(method)` has the bytes of the last call. One thread at a time.
class FakeDBUS {
    using IDBUSProxy = Common::DBUSWrapper::IDBUSProxy;

public:
    void reply(const std::string& method, const std::string& result = "") {
        m_state->scripts[method].always = answer(true, method, result);
    }
    void replyWithException(const std::string& method, const std::string& name, const std::string& archive) {
        m_state->scripts[method].always = answer(false, name, archive);
    }
    template <class E>
    void fail(const std::string& method, const E& exception) {
        m_state->scripts[method].always = failure(exception);
    }
    void nextReply(const std::string& method, const std::string& result = "") {
        m_state->scripts[method].next.push_back(answer(true, method, result));
    }
    template <class E>
    void failNext(const std::string& method, const E& exception) {
        m_state->scripts[method].next.push_back(failure(exception));
    }
    template <class E>
    void failCreate(const E& exception) {
        m_state->onCreate = [exception] { throw boost::enable_current_exception(exception); };
    }
    template <class E>
    void failInit(const E& exception) {
        m_state->onInit = [exception] { throw boost::enable_current_exception(exception); };
    }

    std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> factory() const { return std::make_shared<Factory>(m_state); }
    std::unique_ptr<IDBUSProxy> proxy() const {
        return factory()->create(Common::DBUSWrapper::IDBUSWrapper::SYSTEM, "/path", "an.interface", {}, {});
    }

    const std::vector<std::string>& events() const { return m_state->events; }
    void forgetEvents() { m_state->events.clear(); }
    const std::string& parameters(const std::string& method) const { return m_state->parameters.at(method); }

private:
    using Answer = std::function<bool(std::stringstream& output, std::string& function)>;

    struct Script {
        Answer always;
        std::deque<Answer> next;
    };

    struct State {
        std::map<std::string, Script> scripts;
        std::map<std::string, std::string> parameters;
        std::vector<std::string> events;
        std::function<void()> onCreate = [] {};
        std::function<void()> onInit = [] {};
        int created = 0;
    };

    class Proxy : public IDBUSProxy {
    public:
        Proxy(std::shared_ptr<State> state, int number) : m_state(std::move(state)), m_number(std::to_string(number)) {}
        ~Proxy() override { m_state->events.push_back("drop " + getProxyUniqueId()); }

        std::string getProxyUniqueId() override { return "Proxy-" + m_number; }
        std::string getDBUSDebugConnectionId() override { return ":1." + m_number; }
        void init(const std::string& connectionName) override {
            m_state->events.push_back("init " + getProxyUniqueId() + " " + connectionName);
            m_state->onInit();
        }
        bool call(const std::string& method, const std::stringstream& parameters, std::stringstream& output,
                  std::string& function) override {
            m_state->events.push_back("call " + getProxyUniqueId() + " " + method);
            m_state->parameters[method] = parameters.str();
            return nextAnswer(method)(output, function);
        }

    private:
        Answer nextAnswer(const std::string& method) {
            Script& script = m_state->scripts[method];
            if (!script.next.empty()) {
                const Answer answer = script.next.front();
                script.next.pop_front();
                return answer;
            }
            if (!script.always) {
                throw std::logic_error("the fake bus has no answer to " + method);
            }
            return script.always;
        }

        std::shared_ptr<State> m_state;
        std::string m_number;
    };

    class Factory : public IDBUSProxy::IDBUSProxyFactory {
    public:
        explicit Factory(std::shared_ptr<State> state) : m_state(std::move(state)) {}

        std::unique_ptr<IDBUSProxy> create(Common::DBUSWrapper::IDBUSWrapper::DBUSType type,
                                           const std::string& objectPath, const std::string& interfaceName,
                                           boost::optional<unsigned int> activationTimeoutMs,
                                           boost::optional<unsigned int> callTimeoutMs) override {
            m_state->onCreate();
            const int number = ++m_state->created;
            m_state->events.push_back("create Proxy-" + std::to_string(number) + " " + std::to_string(type) + " " +
                                      objectPath + " " + interfaceName + " " + text(activationTimeoutMs) + " " +
                                      text(callTimeoutMs));
            return std::make_unique<Proxy>(m_state, number);
        }

    private:
        static std::string text(boost::optional<unsigned int> timeout) {
            return timeout ? std::to_string(*timeout) : "none";
        }

        std::shared_ptr<State> m_state;
    };

    static Answer answer(bool isNormal, const std::string& name, const std::string& archive) {
        return [=](std::stringstream& output, std::string& function) {
            function = name;
            output << archive;
            return isNormal;
        };
    }
    template <class E>
    static Answer failure(const E& exception) {
        return
            [exception](std::stringstream&, std::string&) -> bool { throw boost::enable_current_exception(exception); };
    }

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace DAX::Tests
