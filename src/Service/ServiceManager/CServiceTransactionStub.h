#pragma once

#include <memory>
#include <string>

#include "ServiceInterface/IServiceTransaction.h"

namespace DAX {
namespace Service {
namespace ServiceManager {

// Takes the place of a real transaction on a development device: plays a scenario file, with no update core.
class CServiceTransactionStub : public IServiceTransaction {
public:
    // The stub that the scenario file at `path` describes. Throws when there is none to be had.
    static std::unique_ptr<CServiceTransactionStub> load(const std::string& path);
};

} // namespace ServiceManager
} // namespace Service
} // namespace DAX
