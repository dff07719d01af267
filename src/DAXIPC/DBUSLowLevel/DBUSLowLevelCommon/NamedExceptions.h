#pragma once

#include <tuple>

#include "DAXCommon/UserInterestExceptions.h"

namespace DAX::DAXIPC::DBUSLowLevel {

// An exception type that crosses the bus, and the name that stands for it there.
template <class ExceptionType>
struct NamedException {
    const char* wireName;
};

// All of them, in the order in which an exception is tried against the types. Every other exception travels as the
// last one.
inline constexpr std::tuple NAMED_EXCEPTIONS{
    NamedException<UserInterestExceptions::TransactionInvalidatedException>{"TransactionInvalidatedException"},
    NamedException<UserInterestExceptions::CUpdateFailed>{"CUpdateFailed"},
    NamedException<UserInterestExceptions::CUSBReadError>{"CUSBReadError"},
    NamedException<UserInterestExceptions::CNetworkTransferError>{"CNetworkTransferError"},
    NamedException<UserInterestExceptions::CUSBImageCorrupted>{"CUSBImageCorrupted"},
    NamedException<UserInterestExceptions::CUSBDecryptionError>{"CUSBDecryptionError"},
    NamedException<UserInterestExceptions::CImageCorrupted>{"CImageCorrupted"},
    NamedException<UserInterestExceptions::CWrongKeys>{"CWrongKeys"},
    NamedException<UserInterestExceptions::CImageLacksIntegrity>{"CImageLacksIntegrity"},
    NamedException<UserInterestExceptions::ExternalLockDenied>{"ExternalLockDenied"},
    NamedException<UserInterestExceptions::CWildcardImageNotAllowedException>{"CWildcardImageNotAllowedException"},
    NamedException<UserInterestExceptions::InsufficientRWStorageSpace>{"InsufficientRWStorageSpace"},
    NamedException<UserInterestExceptions::DAXUnknownException>{"DAXUnknownException"},
};

} // namespace DAX::DAXIPC::DBUSLowLevel
