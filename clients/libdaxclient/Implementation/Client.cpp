#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "Common/DBUSWrapper/PeerWatch.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxy.h"
#include "DAXIPC/IDAXIPC.h"
#include "libdaxclient/Implementation/ClientCore.h"
#include "libdaxclient/Implementation/LockCore.h"
#include "libdaxclient/Implementation/MovedFrom.h"
#include "libdaxclient/Implementation/ServiceProxies.h"
#include "libdaxclient/Implementation/SessionCore.h"
#include "libdaxclient/Implementation/Values.h"

namespace dax {

using DAX::Common::DBUSWrapper::ClientConnection;
using DAX::Common::DBUSWrapper::PeerWatch;
using DAX::DAXCommon::ServiceClientPriority;
using DAX::DAXCommon::ServiceTransactionType;
using DAX::DAXIPC::DBUSLowLevel::CServiceManagerProxy;
using DAX::Service::IServiceManager;
namespace Names = DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;

namespace {

unsigned int milliseconds(std::chrono::milliseconds time) {
    if (time < std::chrono::milliseconds(1)) {
        throw std::invalid_argument("A call of the update service needs at least 1 ms.");
    }
    const std::chrono::milliseconds longest(std::numeric_limits<unsigned int>::max());
    return static_cast<unsigned int>(std::min(time, longest).count());
}

std::shared_ptr<const detail::Context> contextOf(std::string name, Options options) {
    return std::make_shared<const detail::Context>(detail::Context{
        std::move(name), {std::move(options.busAddress), milliseconds(options.callTimeout)}, std::move(options.log)});
}

std::unique_ptr<IServiceManager> connect(const ClientConnection& connection) {
    return std::make_unique<CServiceManagerProxy>(detail::createServiceProxies(connection));
}

// As the client's, but the last call of a session does not start the service.
ClientConnection connectionOf(const detail::Context& context, std::shared_ptr<const detail::Contact> contact) {
    ClientConnection connection = context.connection;
    connection.mayStart = [contact = std::move(contact)] { return !contact->isEnding(); };
    return connection;
}

std::optional<Owner> ownerOf(IServiceManager& manager) {
    ServiceClientPriority priority{};
    ServiceTransactionType type{};
    Owner owner;
    if (!manager.getServiceOwner(priority, owner.clientName, type)) {
        return std::nullopt;
    }
    owner.priority = static_cast<Priority>(priority);
    owner.transactionType = static_cast<TransactionType>(type);
    return owner;
}

// The service says no, and nothing else.
Refusal refusal(const std::string& clientName, Priority priority, std::optional<Owner> owner) {
    auto reason = Refusal::Reason::LOCKED;
    if (owner && owner->clientName == clientName) {
        reason = Refusal::Reason::SAME_CLIENT;
    } else if (owner && owner->priority >= priority) {
        reason = Refusal::Reason::HELD;
    }
    return {reason, std::move(owner)};
}

} // namespace

namespace detail {

ClientCore::ClientCore(std::shared_ptr<const Context> context)
    : m_context(std::move(context)), m_manager(callService(*m_context, [this] {
        DAX::DAXIPC::IDAXIPC::initialize();
        return connect(m_context->connection);
    })) {}

} // namespace detail

Client::Client(std::string name, Options options)
    : m_core(std::make_shared<detail::ClientCore>(contextOf(std::move(name), std::move(options)))) {}
Client::Client(Client&&) noexcept = default;
Client& Client::operator=(Client&&) noexcept = default;
Client::~Client() = default;

detail::ClientCore& Client::core() const {
    return detail::insideOf(m_core);
}

bool Client::isServiceRunning() const {
    const detail::Context& context = *core().context();
    return detail::callService(context, [&context] {
        return PeerWatch(context.connection, Names::CONNECTION_NAME).askWhetherAnybodyHasTheName();
    });
}

std::string Client::version() {
    return core().call([](IServiceManager& manager) { return manager.getCurrentVersion(); });
}

std::vector<UpgradeType> Client::supportedTypes() {
    const auto types = core().call([](IServiceManager& manager) { return manager.getSupportedUpgradeTypes(); });
    std::vector<UpgradeType> supported;
    supported.reserve(types.size());
    for (const auto type : types) {
        supported.push_back(static_cast<UpgradeType>(type));
    }
    return supported;
}

std::optional<LocalTime> Client::lastSearch() {
    return core().call(
        [](IServiceManager& manager) { return detail::toClient(manager.getLastSearchingForUpgradeDate()); });
}

std::optional<Owner> Client::owner() {
    return core().call([](IServiceManager& manager) { return ownerOf(manager); });
}

void Client::scheduleFactoryReset() {
    core().call([](IServiceManager& manager) { manager.scheduleFactoryReset(); });
}

// A session has a manager of its own, with whose connection it ends even when the service does not answer.
Session Client::request(Priority priority, TransactionType type) {
    const std::shared_ptr<const detail::Context>& context = core().context();
    return detail::callService(*context, [&] {
        auto contact = std::make_shared<detail::Contact>();
        std::unique_ptr<IServiceManager> manager = connect(connectionOf(*context, contact));
        auto service = manager->getService(static_cast<ServiceClientPriority>(priority), context->clientName,
                                           static_cast<ServiceTransactionType>(type));
        if (service == nullptr) {
            throw refusal(context->clientName, priority, ownerOf(*manager));
        }
        return Session(
            std::make_unique<detail::SessionCore>(context, std::move(contact), std::move(manager), std::move(service)));
    });
}

Lock Client::lock(Priority priority) {
    const std::shared_ptr<const detail::Context>& context = core().context();
    return detail::callService(*context, [&] { return Lock(std::make_unique<detail::LockCore>(context, priority)); });
}

LockId Client::acquireLock(Priority priority) {
    return core().call([&](IServiceManager& manager) {
        return manager.acquireExternalLock(core().context()->clientName, static_cast<ServiceClientPriority>(priority));
    });
}

void Client::releaseLock(LockId id) {
    core().call([&](IServiceManager& manager) { manager.releaseExternalLock(core().context()->clientName, id); });
}

} // namespace dax
