#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include <boost/core/noncopyable.hpp>

namespace DAX::Common::Utils {

// The process-wide implementation of a facade: made by the factory at the first request, unless another was put in
// before. Any thread may call. It is not registered anywhere and lives until the process ends.
template <class T>
class SingletonInstanceHandler : private boost::noncopyable {
public:
    explicit SingletonInstanceHandler(std::function<std::unique_ptr<T>()> factory) : m_factory(std::move(factory)) {}

    // The caller's copy keeps the implementation alive over its calls. Null when the factory gives nothing, which is
    // then asked again at the next request; what the factory throws passes, std::bad_function_call for an empty one.
    std::shared_ptr<T> getSingletonInstance() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_instance) {
            m_instance = m_factory();
        }
        return m_instance;
    }

    // One call of it, which it is kept alive over: handler->operation(). There must be an implementation by then.
    std::shared_ptr<T> operator->() { return getSingletonInstance(); }

    // Puts another implementation in; the old one is released before this returns. Null calls the factory again.
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
