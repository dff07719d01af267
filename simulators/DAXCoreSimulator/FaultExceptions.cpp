#include "DAXCoreSimulator/FaultExceptions.h"

#include <map>

#include "DAXCommon/UserInterestExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAXCoreSimulator {

namespace {

using namespace DAX::UserInterestExceptions;

template <class Exception>
[[noreturn]] void raise(const std::string& supportCode, const std::string& text) {
    Exception exception;
    if (!supportCode.empty()) {
        exception << DAX::Common::Utils::errinfo_supportcode(supportCode);
    }
    DAX_THROW(exception, text);
}

using Raise = void (*)(const std::string& supportCode, const std::string& text);

const std::map<std::string, Raise> RAISES{
    {"TransactionInvalidatedException", &raise<TransactionInvalidatedException>},
    {"CUpdateFailed", &raise<CUpdateFailed>},
    {"CUSBReadError", &raise<CUSBReadError>},
    {"CNetworkTransferError", &raise<CNetworkTransferError>},
    {"CUSBImageCorrupted", &raise<CUSBImageCorrupted>},
    {"CUSBDecryptionError", &raise<CUSBDecryptionError>},
    {"CImageCorrupted", &raise<CImageCorrupted>},
    {"CWrongKeys", &raise<CWrongKeys>},
    {"CImageLacksIntegrity", &raise<CImageLacksIntegrity>},
    {"ExternalLockDenied", &raise<ExternalLockDenied>},
    {"CWildcardImageNotAllowedException", &raise<CWildcardImageNotAllowedException>},
    {"InsufficientRWStorageSpace", &raise<InsufficientRWStorageSpace>},
    {"DAXUnknownException", &raise<DAXUnknownException>},
};

} // namespace

bool isExceptionName(const std::string& name) {
    return RAISES.count(name) != 0;
}

void raiseException(const std::string& name, const std::string& supportCode, const std::string& text) {
    RAISES.at(name)(supportCode, text);
    std::abort(); // not reached: every function of the table throws
}

} // namespace DAXCoreSimulator
