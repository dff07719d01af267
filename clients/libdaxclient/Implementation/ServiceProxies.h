#pragma once

#include <exception>
#include <memory>
#include <string>

#include "Common/DBUSWrapper/ClientConnection.h"
#include "Common/DBUSWrapper/IDBUSProxy.h"

namespace dax::detail {

// The service has answered with an exception whose name this library does not know: a newer service, or none at all.
class ForeignException : public std::exception {
public:
    ForeignException(std::string name, std::string archive);

    const std::string& name() const { return m_name; }
    const std::string& archive() const { return m_archive; }

private:
    std::string m_name;
    std::string m_archive;
};

// Makes the proxies of this library. Their ids are 128 random bits, so that nobody can guess whose session or
// transaction to claim. Their calls throw ForeignException.
//
// With a unique bus name they call that peer only, whatever name they are told to call: a call reaches it or fails, and
// neither reaches a successor nor starts one.
std::shared_ptr<DAX::Common::DBUSWrapper::IDBUSProxy::IDBUSProxyFactory>
createServiceProxies(const DAX::Common::DBUSWrapper::ClientConnection& connection, const std::string& uniqueName = {});

} // namespace dax::detail
