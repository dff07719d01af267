#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <boost/optional.hpp>
#include <gtest/gtest.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "support/PrivateBus.h"
#include "support/RawPeer.h"
#include "support/Thrown.h"

namespace DAX::Tests {

const char PATH[] = "/org/kovan/test/remote";
const char INTERFACE[] = "org.kovan.test.iremote";
const char NAME[] = "org.kovan.test.remote";

// A proxy for the object PATH; init() says whom it calls.
inline std::unique_ptr<Common::DBUSWrapper::IDBUSProxy>
createProxy(boost::optional<unsigned int> callTimeoutMs = boost::none,
            Common::DBUSWrapper::IDBUSWrapper::DBUSType type = Common::DBUSWrapper::IDBUSWrapper::SYSTEM) {
    return Common::DBUSWrapper::IDBUSProxy::createDefaultProxyFactory()->create(type, PATH, INTERFACE, 1000U,
                                                                                callTimeoutMs);
}

inline RawMessage replyTo(DBusMessage& call) {
    return RawMessage(dbus_message_new_method_return(&call));
}

// Answers with byte arrays.
inline RawServer::Answer arrays(const std::vector<std::string>& values) {
    return [values](DBusMessage& call) {
        RawMessage reply = replyTo(call);
        for (const std::string& value : values) {
            appendBytes(*reply, value);
        }
        return reply;
    };
}

inline RawServer::Answer error(const char* name, const char* text) {
    return [name, text](DBusMessage& call) { return RawMessage(dbus_message_new_error(&call, name, text)); };
}

// A bus, and calls of NAME on it.
class ProxyFixture : public testing::Test {
protected:
    struct Result {
        bool normal = false;
        std::string function = "before";
        std::stringstream output{"before ", std::ios::in | std::ios::out | std::ios::ate};
    };

    // One call of "method" by a new proxy.
    Result call(const std::string& parameters = "", boost::optional<unsigned int> callTimeoutMs = boost::none) {
        const std::unique_ptr<Common::DBUSWrapper::IDBUSProxy> proxy = createProxy(callTimeoutMs);
        proxy->init(NAME);
        return callWith(*proxy, parameters);
    }

    static Result callWith(Common::DBUSWrapper::IDBUSProxy& proxy, const std::string& parameters = "") {
        Result result;
        result.normal = proxy.call("method", std::stringstream(parameters), result.output, result.function);
        return result;
    }

    PrivateBus bus;
};

} // namespace DAX::Tests
