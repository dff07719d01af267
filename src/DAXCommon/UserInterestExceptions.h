#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::UserInterestExceptions {

// The root of the exceptions that a user may have to hear of. They add nothing but their type: what they tell is in
// their tags, above all the support code.
class UserInterestException : public virtual boost::exception, public virtual std::exception {
public:
    template <class Archive>
    void serialize(Archive&, unsigned int) {}
};

class TransactionInvalidatedException : public UserInterestException {};
class CUpdateFailed : public UserInterestException {};
class CUSBReadError : public UserInterestException {};
class CNetworkTransferError : public UserInterestException {};
class CUSBImageCorrupted : public UserInterestException {};
class CUSBDecryptionError : public UserInterestException {};
class CImageCorrupted : public UserInterestException {};
class CWrongKeys : public UserInterestException {};
class CImageLacksIntegrity : public UserInterestException {};
class ExternalLockDenied : public UserInterestException {};
class CWildcardImageNotAllowedException : public UserInterestException {};
class InsufficientRWStorageSpace : public UserInterestException {};

// Stands for every exception that has no name of its own on the bus.
class DAXUnknownException : public UserInterestException {};

// The session is gone or belongs to another client. Has no name on the bus: it goes out as DAXUnknownException.
class ServiceRevokedException : public UserInterestException {};

} // namespace DAX::UserInterestExceptions
