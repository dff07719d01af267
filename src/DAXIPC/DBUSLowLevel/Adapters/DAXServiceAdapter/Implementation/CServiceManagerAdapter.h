#pragma once

#include <memory>
#include <sstream>
#include <string>

#include <boost/optional.hpp>

#include "Common/DBUSWrapper/IDBUSEventsSubscriber.h"
#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"
#include "ServiceInterface/IServiceManager.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// The request handler behind the daemon's one object: decodes each call, checks who is calling, calls the service logic
// and encodes the result. A session or transaction may only be used by the connection that has said hello with the name
// of its proxy; a later hello replaces an earlier one. Lives on the adapter's thread.
class CServiceManagerAdapter : public Common::DBUSWrapper::IDBUSRequestsHandler {
public:
    explicit CServiceManagerAdapter(const std::shared_ptr<Service::IServiceManager::IServiceManagerFactory>& factory);
    CServiceManagerAdapter(const CServiceManagerAdapter&) = delete;
    CServiceManagerAdapter& operator=(const CServiceManagerAdapter&) = delete;
    ~CServiceManagerAdapter() override;

    bool handleRequest(const std::string& method, std::stringstream& in, std::stringstream& out,
                       std::string& exceptionName, const char* sender) override;
    void introspect(std::stringstream& out) override;
    void useThisEventSubscriber(Common::DBUSWrapper::IDBUSEventsSubscriber& subscriber) override;
    void clientDisconnected(const char* sender) override;

    // A handler for each method of the object; the table is in the source file.
    using Handler = void (CServiceManagerAdapter::*)(std::stringstream& in, std::stringstream& out, const char* sender);

    // The usual handler of a method: check the sender, decode the arguments, call the operation, encode its result.
    template <const auto& METHOD, auto Operation>
    void relay(std::stringstream& in, std::stringstream& out, const char* sender);

    void handle_getService(std::stringstream& in, std::stringstream& out, const char* sender);
    void handle_getServiceOwner(std::stringstream& in, std::stringstream& out, const char* sender);
    void handle_helloMessage(std::stringstream& in, std::stringstream& out, const char* sender);
    void handle_startNewTransaction(std::stringstream& in, std::stringstream& out, const char* sender);
    void handle_invalidate(std::stringstream& in, std::stringstream& out, const char* sender);
    void handle_cancelServiceTransaction(std::stringstream& in, std::stringstream& out, const char* sender);

private:
    struct NameAndService {
        std::string serviceManagerClient; // the connection that asked for the session; its end invalidates it
        std::string proxyName;
        std::string originalSender; // the session proxy's connection, once it has said hello
        std::shared_ptr<Service::IService> service;
    };

    struct NameAndServiceTransaction {
        std::string proxyName;
        std::string originalSender; // the transaction proxy's connection, once it has said hello
        std::weak_ptr<Service::IServiceTransaction> transaction; // owned by the session
    };

    std::shared_ptr<Service::IService> throwIfWrongService(const char* sender) const;
    std::shared_ptr<Service::IServiceTransaction> throwIfWrongTransaction(const char* sender) const;

    // The object that `sender` may call, by the interface of the operation. Throws when there is none for it.
    template <class Interface>
    std::shared_ptr<Interface> targetFor(const char* sender) const;

    std::string describeServiceClient() const;

    std::shared_ptr<Service::IServiceManager> m_serviceManager;
    Common::DBUSWrapper::IDBUSEventsSubscriber* m_eventsSubscriber = nullptr;
    boost::optional<NameAndService> m_service;
    boost::optional<NameAndServiceTransaction> m_serviceTransaction;
};

} // namespace DAX::DAXIPC::DBUSLowLevel
