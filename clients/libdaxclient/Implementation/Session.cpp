#include <utility>

#include "libdaxclient/Implementation/MovedFrom.h"
#include "libdaxclient/Implementation/SessionCore.h"
#include "libdaxclient/Implementation/TransactionCore.h"

namespace dax {

using DAX::Service::IService;

namespace detail {

SessionCore::SessionCore(std::shared_ptr<const Context> context, std::shared_ptr<Contact> contact,
                         std::unique_ptr<DAX::Service::IServiceManager> manager, std::shared_ptr<IService> service)
    : m_context(std::move(context))
    , m_contact(std::move(contact))
    , m_manager(std::move(manager))
    , m_service(std::move(service)) {}

// After a call without an answer, a further one would only wait.
SessionCore::~SessionCore() {
    if (m_contact->isLost() || m_context->isOfAnotherProcess()) {
        return;
    }
    m_contact->setEnding();
    try {
        call([](IService& service) { service.invalidate("The client has finished."); });
    } catch (...) { // nobody is left to be told
        return;
    }
}

} // namespace detail

Session::Session(std::unique_ptr<detail::SessionCore> core) noexcept : m_core(std::move(core)) {}
Session::Session(Session&&) noexcept = default;
Session& Session::operator=(Session&&) noexcept = default;
Session::~Session() = default;

detail::SessionCore& Session::core() const {
    return detail::insideOf(m_core);
}

Transaction Session::start(UpgradeType type) {
    auto transaction = core().call([type](IService& service) {
        return service.startNewTransaction(static_cast<DAX::DAXCommon::UpgradeType>(type));
    });
    if (transaction == nullptr) {
        throw Refusal(Refusal::Reason::SESSION_OVER, std::nullopt);
    }
    return Transaction(std::make_unique<detail::TransactionCore>(core(), std::move(transaction)));
}

Priority Session::priority() {
    return static_cast<Priority>(core().call([](IService& service) { return service.getClientPriority(); }));
}

void Session::end(const std::string& reason) {
    core().call([&reason](IService& service) { service.invalidate(reason); });
}

} // namespace dax
