#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "ServiceInterface/IServiceManager.h"
#include "libdaxclient/Implementation/Context.h"
#include "libdaxclient/Implementation/Translation.h"

namespace dax::detail {

class ClientCore {
public:
    explicit ClientCore(std::shared_ptr<const Context> context);

    const std::shared_ptr<const Context>& context() const { return m_context; }

    // Calls with the service's manager, which takes one call at a time.
    template <class Call>
    auto call(const Call& call) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return callService(*m_context, [&] { return call(*m_manager); });
    }

private:
    const std::shared_ptr<const Context> m_context;
    std::mutex m_mutex; // held during a call of m_manager
    std::unique_ptr<DAX::Service::IServiceManager> m_manager;
};

} // namespace dax::detail
