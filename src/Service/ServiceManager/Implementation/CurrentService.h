#pragma once

#include <memory>
#include <mutex>

#include "Service/ServiceManager/Implementation/CService.h"

namespace DAX::Service::ServiceManager {

// A weak pointer to the session that was granted last. Any thread may call: client calls replace the pointer while a
// power-mode change reads it on another thread.
class CurrentService {
public:
    std::shared_ptr<CService> lock() const {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_service.lock();
    }

    void set(const std::shared_ptr<CService>& service) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_service = service;
    }

    void reset() { set(nullptr); }

private:
    mutable std::mutex m_mutex; // guards m_service
    std::weak_ptr<CService> m_service;
};

} // namespace DAX::Service::ServiceManager
