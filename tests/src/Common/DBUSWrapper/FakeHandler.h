#pragma once

#include <functional>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Common/DBUSWrapper/IDBUSEventsSubscriber.h"
#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {

// A handler that answers every request with the request's input, or as the test says, and remembers the requests.
// `onRequest` and `onDisconnected` must be set before the adapter runs. Each call leaves a note in the journal.
class FakeHandler : public Common::DBUSWrapper::IDBUSRequestsHandler {
public:
    struct Request {
        std::string method;
        std::string input;
        std::string sender;
    };

    // The result, `out` and `exceptionName` of a request.
    std::function<bool(const Request& request, std::stringstream& out, std::string& exceptionName)> onRequest;
    std::function<void(const std::string& sender)> onDisconnected;
    Common::DBUSWrapper::IDBUSEventsSubscriber* subscriber = nullptr;

    bool handleRequest(const std::string& method, std::stringstream& in, std::stringstream& out,
                       std::string& exceptionName, const char* sender) override {
        const Request request{method, in.str(), sender};
        FakeKovan::note("request " + method);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_requests.push_back(request);
        }
        if (onRequest) {
            return onRequest(request, out, exceptionName);
        }
        out << request.input;
        return true;
    }
    void introspect(std::stringstream& out) override { out << "<node/>"; }
    void useThisEventSubscriber(Common::DBUSWrapper::IDBUSEventsSubscriber& given) override { subscriber = &given; }
    void clientDisconnected(const char* sender) override {
        FakeKovan::note(std::string("disconnected ") + sender);
        if (onDisconnected) {
            onDisconnected(sender);
        }
    }

    std::vector<Request> requests() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_requests;
    }

private:
    mutable std::mutex m_mutex; // guards m_requests
    std::vector<Request> m_requests;
};

} // namespace DAX::Tests
