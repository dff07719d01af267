#pragma once

#include <boost/exception/diagnostic_information.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/SignalSubscriber.h"

namespace DAX {
namespace Platform {

// Holds the callback of a power event. No event reaches it: it is not bound to a signal of the device.
template <class Callback>
class PowerSubscriber : public Common::Utils::SignalSubscriber<Callback> {
public:
    explicit PowerSubscriber(const char* name) : m_name(name) {}

    ~PowerSubscriber() override {
        try {
            if (this->isSubscribed()) {
                this->unsubscribe();
            }
        } catch (...) {
            DAX_LOG(ERR) << "Exception was caught in " << m_name << ": "
                         << boost::current_exception_diagnostic_information(true);
        }
    }

private:
    boost::optional<boost::thread::id> getExpectedExecutorThreadID() override { return boost::none; }
    void doSubscribe() override {}
    int doUnsubscribe() override { return 0; }

    const char* m_name;
};

} // namespace Platform
} // namespace DAX
