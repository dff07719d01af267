#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "ServiceInterface/IServiceManager.h"
#include "libdaxclient/Implementation/Context.h"
#include "libdaxclient/Implementation/Translation.h"

namespace dax::detail {

// How a session and its transactions stand with the service. Any thread.
class Contact {
public:
    // Whether a call has had no answer so far.
    bool isLost() const { return m_isLost; }

    // Whether the session makes its last call, for which no service must be started.
    bool isEnding() const { return m_isEnding; }
    void setEnding() { m_isEnding = true; }

    // Notices when the call ends without an answer.
    template <class Call>
    auto watched(const Call& call) {
        try {
            return call();
        } catch (const Unreachable&) {
            m_isLost = true;
            throw;
        }
    }

private:
    std::atomic<bool> m_isLost{false};
    std::atomic<bool> m_isEnding{false};
};

class SessionCore {
public:
    // The session ends with the manager's connection at the latest.
    SessionCore(std::shared_ptr<const Context> context, std::shared_ptr<Contact> contact,
                std::unique_ptr<DAX::Service::IServiceManager> manager,
                std::shared_ptr<DAX::Service::IService> service);
    SessionCore(const SessionCore&) = delete;
    SessionCore& operator=(const SessionCore&) = delete;
    ~SessionCore();

    const std::shared_ptr<const Context>& context() const { return m_context; }
    const std::shared_ptr<Contact>& contact() const { return m_contact; }

    template <class Call>
    auto call(const Call& call) {
        return m_contact->watched([&] { return callService(*m_context, [&] { return call(*m_service); }); });
    }

private:
    const std::shared_ptr<const Context> m_context;
    const std::shared_ptr<Contact> m_contact;
    const std::unique_ptr<DAX::Service::IServiceManager> m_manager;
    const std::shared_ptr<DAX::Service::IService> m_service;
};

} // namespace dax::detail
