#include "Service/ServiceManager/CServiceTransactionStub.h"

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX {
namespace Service {
namespace ServiceManager {

using Common::Utils::errinfo_description;
using Common::Utils::errinfo_path;
using Common::Utils::GenericException;

std::unique_ptr<CServiceTransactionStub> CServiceTransactionStub::load(const std::string& path) {
    DAX_THROW(GenericException(), errinfo_description("Transaction scenarios cannot be played.") << errinfo_path(path));
}

} // namespace ServiceManager
} // namespace Service
} // namespace DAX
