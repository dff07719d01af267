#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/ClientConnection.h"
#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "Common/DBUSWrapper/Implementation/CallChannel.h"
#include "Common/DBUSWrapper/Implementation/DBUSConnectionHandle.h"
#include "Common/DBUSWrapper/Implementation/DBUSResources.h"

namespace DAX::Common::DBUSWrapper {

class CDBUSProxy : public IDBUSProxy {
public:
    CDBUSProxy(const std::string& objectPath, const std::string& interfaceName, IDBUSWrapper::DBUSType type,
               boost::optional<unsigned int> activationTimeoutMs, boost::optional<unsigned int> callTimeoutMs);
    CDBUSProxy(const std::string& objectPath, const std::string& interfaceName, const ClientConnection& connection);

    std::string getProxyUniqueId() override;
    std::string getDBUSDebugConnectionId() override;
    bool call(const std::string& method, const std::stringstream& parameters, std::stringstream& output,
              std::string& function) override;
    void init(const std::string& connectionName) override;

private:
    void prepareConnection();
    void waitForAdapter();
    DBUSMessageHandle createCall(const std::string& method, const std::string& parameters) const;
    void throwIfNotCallable(const std::string& method) const;
    DBUSMessageHandle sendAndWait(DBusMessage& message) const;
    template <class Exception>
    [[noreturn]] void throwError(Exception exception, const DBUSError& error) const;

    std::string m_objectPath;
    std::string m_connectionName;
    std::string m_interfaceName;
    DBUSConnectionHandle m_dbusConnectionHandle;
    IDBUSWrapper::DBUSType m_dbusType;
    boost::optional<unsigned int> m_activationTimeoutMs;
    boost::optional<unsigned int> m_callTimeoutMs;
    int m_id;
    bool m_tellsBusErrors = false;
    const std::function<bool()> m_mayStart; // empty: always
    std::unique_ptr<CallChannel> m_channel; // last: it must be destroyed before the connection
};

} // namespace DAX::Common::DBUSWrapper
