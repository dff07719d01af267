#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::UserInterestExceptions {

// The root of the exceptions that a user may have to learn about. They add nothing but their type; the information is
// in their tags, above all the support code.
class UserInterestException : public virtual boost::exception, public virtual std::exception {
public:
    template <class Archive>
    void serialize(Archive&, unsigned int) {}
};

// There is no such transaction any more, or it belongs to another client.
class TransactionInvalidatedException : public UserInterestException {};

// What the update core reports, each under its own name on the bus.
class CUpdateFailed : public UserInterestException {};
class CUSBReadError : public UserInterestException {};
class CNetworkTransferError : public UserInterestException {};
class CUSBImageCorrupted : public UserInterestException {};
class CUSBDecryptionError : public UserInterestException {};
class CImageCorrupted : public UserInterestException {};
class CWrongKeys : public UserInterestException {};
class CImageLacksIntegrity : public UserInterestException {};

// The external lock is refused, since a session of the same or a higher priority exists.
class ExternalLockDenied : public UserInterestException {};

// What the update core reports, too.
class CWildcardImageNotAllowedException : public UserInterestException {};
class InsufficientRWStorageSpace : public UserInterestException {};

// Stands for every exception that has no name of its own on the bus.
class DAXUnknownException : public UserInterestException {};

// The session is gone or belongs to another client. It has no name on the bus and is sent as DAXUnknownException.
class ServiceRevokedException : public UserInterestException {};

} // namespace DAX::UserInterestExceptions
