#pragma once

#include <memory>
#include <mutex>

#include "ServiceInterface/IServiceTransaction.h"
#include "libdaxclient/Implementation/SessionCore.h"

namespace dax::detail {

class TransactionCore {
public:
    TransactionCore(const SessionCore& session, std::shared_ptr<DAX::Service::IServiceTransaction> transaction);

    template <class Call>
    auto call(const Call& call) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return callLocked(call);
    }

    // Starts a search of either kind.
    template <class Call>
    void startSearch(const Call& start) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_hasSearchEnded = false;
        callLocked(start);
    }

    Progress searchProgress();

    // A call that ends the service's process while a search runs. Throws std::logic_error until the search has ended.
    template <class Call>
    auto callAfterSearch(const Call& call) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        throwUnlessSearchHasEnded();
        return callLocked(call);
    }

private:
    template <class Call>
    auto callLocked(const Call& call) {
        return m_contact->watched([&] { return callService(*m_context, [&] { return call(*m_transaction); }); });
    }

    void throwUnlessSearchHasEnded() const;

    const std::shared_ptr<const Context> m_context;
    const std::shared_ptr<Contact> m_contact;
    const std::shared_ptr<DAX::Service::IServiceTransaction> m_transaction;

    std::mutex m_mutex; // held during a call; guards all below
    bool m_hasSearchEnded = false;
};

} // namespace dax::detail
