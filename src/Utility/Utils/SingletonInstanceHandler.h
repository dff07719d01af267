#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include <boost/core/noncopyable.hpp>

namespace DAX::Common::Utils {

// The process-wide implementation of a facade. The factory makes it at the first request, unless another one was set
// before. It is not registered anywhere and lives until the process ends. Any thread may call.
template <class T>
class SingletonInstanceHandler : private boost::noncopyable {
public:
    explicit SingletonInstanceHandler(std::function<std::unique_ptr<T>()> factory) : m_factory(std::move(factory)) {}

    // The implementation; the caller's copy keeps it alive during the calls. Null when the factory returns null; the
    // next request then calls the factory again. What the factory throws passes; an empty factory throws
    // std::bad_function_call.
    std::shared_ptr<T> getSingletonInstance() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_instance) {
            m_instance = m_factory();
        }
        return m_instance;
    }

    // For one call, handler->operation(), which keeps the implementation alive. There must be an implementation.
    std::shared_ptr<T> operator->() { return getSingletonInstance(); }

    // Replaces the implementation, and releases the old one before it returns. After null, the next request calls the
    // factory again.
    void setImplementationSingleton(std::unique_ptr<T> implementation) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_instance = std::move(implementation);
    }

private:
    std::shared_ptr<T> m_instance;
    std::mutex m_mutex; // guards m_instance
    const std::function<std::unique_ptr<T>()> m_factory;
};

} // namespace DAX::Common::Utils
