#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "ServiceInterface/IServiceManager.h"
#include "libdaxclient/Implementation/Context.h"
#include "libdaxclient/Implementation/Translation.h"

namespace dax::detail {

// Whether the service has answered every call of a session and of its transactions. Any thread.
class Contact {
public:
    bool isLost() const { return m_isLost; }

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
};

class SessionCore {
public:
    // The session ends with the manager's connection at the latest.
    SessionCore(std::shared_ptr<const Context> context, std::unique_ptr<DAX::Service::IServiceManager> manager,
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
    const std::shared_ptr<Contact> m_contact = std::make_shared<Contact>();
    const std::unique_ptr<DAX::Service::IServiceManager> m_manager;
    const std::shared_ptr<DAX::Service::IService> m_service;
};

} // namespace dax::detail
