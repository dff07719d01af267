#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "FakeHandler.h"
#include "support/FakeKovan.h"
#include "support/PrivateBus.h"
#include "support/RawPeer.h"

namespace DAX::Tests {

const char OBJECT_PATH[] = "/org/kovan/test/object";
const char INTERFACE_NAME[] = "org.kovan.test.iobject";
const char CONNECTION_NAME[] = "org.kovan.test.object";

// A call of the adapter's object, without arguments.
inline RawMessage makeCall(const std::string& member, const char* interfaceName = INTERFACE_NAME) {
    return RawMessage(dbus_message_new_method_call(CONNECTION_NAME, OBJECT_PATH, interfaceName, member.c_str()));
}

inline RawMessage makeCallWith(const std::string& member, const std::string& bytes) {
    RawMessage message = makeCall(member);
    appendBytes(*message, bytes);
    return message;
}

inline RawMessage makeIntrospection() {
    return makeCall("Introspect", DBUS_INTERFACE_INTROSPECTABLE);
}

// A signal of the adapter's object, sent to nobody but the adapter.
inline RawMessage makeSignal(const std::string& member) {
    RawMessage message(dbus_message_new_signal(OBJECT_PATH, INTERFACE_NAME, member.c_str()));
    dbus_message_set_destination(message.get(), CONNECTION_NAME);
    return message;
}

// An adapter on a bus of its own, over a fake handler. The loop runs on a thread of the test from start() to stop().
class AdapterFixture : public testing::Test {
protected:
    struct Run {
        unsigned int stopInterval = 1;
        unsigned int idleTimeout = 0;
        unsigned int pingInterval = 1;
        std::function<void()> ping;
    };

    AdapterFixture() { FakeKovan::setProduction(true); }

    // On a bus with the rules of a system bus, which allow this user everything with the adapter's name.
    explicit AdapterFixture(const std::map<std::string, unsigned int>& limits) : bus({{OBJECT_POLICY}, limits}) {
        FakeKovan::setProduction(true);
    }
    ~AdapterFixture() override { stop(); }

    static std::unique_ptr<Common::DBUSWrapper::IDBUSAdapter> createAdapter(std::shared_ptr<FakeHandler> forHandler) {
        return Common::DBUSWrapper::IDBUSAdapter::createDefaultAdapterFactory()->create(
            Common::DBUSWrapper::IDBUSWrapper::SYSTEM, OBJECT_PATH, std::move(forHandler), true);
    }

    void listen(const Run& run) {
        boost::optional<std::function<void()>> ping;
        if (run.ping) {
            ping = run.ping;
        }
        const std::function<bool()> stopCondition = [this] {
            ++stopQuestions;
            return stopWanted.load();
        };
        adapter->listenDBUS(run.stopInterval, run.idleTimeout, run.pingInterval, stopCondition, ping, CONNECTION_NAME);
    }

    // Runs the loop and returns when the adapter has its name. After stop(), `failure` holds an exception that left the
    // loop.
    void start(const Run& run) {
        m_loop = std::thread([this, run] {
            try {
                listen(run);
            } catch (...) {
                failure = std::current_exception();
            }
        });
        ASSERT_TRUE(FakeKovan::waitForMessage("INF", "DBUSAdapter adapter thread started."));
    }
    void start() { start(Run()); }

    // Sets the stop condition, wakes the loop with a call that does not count as a client, and waits for its end.
    void stop() {
        if (m_loop.joinable()) {
            stopWanted = true;
            wake();
            m_loop.join();
        }
    }

    void waitForEnd() { m_loop.join(); }

    static void wake() {
        try {
            RawPeer().send(*makeIntrospection());
        } catch (const std::runtime_error&) {
            // without a bus the loop has ended by itself
        }
    }

    // The log messages of the adapter itself, without those of the watchdogs' threads.
    static std::vector<std::string> messages() {
        std::vector<std::string> result;
        for (const FakeKovan::LogLine& line : FakeKovan::logLines()) {
            if (line.file.find("DBUS") != std::string::npos || line.file.rfind("Bus", 0) == 0) {
                result.push_back(line.level + " " + line.message);
            }
        }
        return result;
    }

    PrivateBus bus;
    std::shared_ptr<FakeHandler> handler = std::make_shared<FakeHandler>();
    std::unique_ptr<Common::DBUSWrapper::IDBUSAdapter> adapter = createAdapter(handler);
    std::atomic<bool> stopWanted{false};
    std::atomic<int> stopQuestions{0};
    std::exception_ptr failure;

private:
    std::thread m_loop;
};

} // namespace DAX::Tests
