#include "Service/ServiceManager/ProgressHelper.h"

#include <cstdlib>
#include <string>
#include <utility>

#include <boost/assert.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/split_member.hpp>
#include <boost/serialization/string.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Common/XML/XMLInput.h"
#include "Common/XML/XMLOutput.h"
#include "DAXCommon/UserInterestExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Service::ServiceManager {

using boost::serialization::make_nvp;
using std::chrono::steady_clock;
using namespace UserInterestExceptions;

namespace {

const char UNKNOWN_EXCEPTION[] = "DAXUnknownException";
const char USB_READ_ERROR[] = "CUSBReadError";
const char WRONG_KEYS[] = "CWrongKeys";
const char IMAGE_CORRUPTED[] = "CImageCorrupted";
const char NETWORK_TRANSFER_ERROR[] = "CNetworkTransferError";

[[noreturn]] void failForUnsupported(const std::string& what) {
    DAX_LOG(INF) << "Support for this exception type was not yet implemented: " << what;
    BOOST_ASSERT_MSG(false, "Support for this exception type was not yet implemented.");
    std::abort();
}

std::string nameOfException(const boost::exception_ptr& exception) {
    try {
        boost::rethrow_exception(exception);
    } catch (const DAXUnknownException&) {
        return UNKNOWN_EXCEPTION;
    } catch (const CUSBReadError&) {
        return USB_READ_ERROR;
    } catch (const CWrongKeys&) {
        return WRONG_KEYS;
    } catch (const CImageCorrupted&) {
        return IMAGE_CORRUPTED;
    } catch (const CNetworkTransferError&) {
        return NETWORK_TRANSFER_ERROR;
    } catch (...) {
        failForUnsupported(boost::current_exception_diagnostic_information(true));
    }
}

boost::exception_ptr exceptionNamed(const std::string& name) {
    if (name == NETWORK_TRANSFER_ERROR) {
        return DAX_EXCEPTION(CNetworkTransferError()).getExceptionPtr();
    }
    if (name == IMAGE_CORRUPTED) {
        return DAX_EXCEPTION(CImageCorrupted()).getExceptionPtr();
    }
    if (name == WRONG_KEYS) {
        return DAX_EXCEPTION(CWrongKeys()).getExceptionPtr();
    }
    if (name == USB_READ_ERROR) {
        return DAX_EXCEPTION(CUSBReadError()).getExceptionPtr();
    }
    if (name == UNKNOWN_EXCEPTION) {
        return DAX_EXCEPTION(DAXUnknownException()).getExceptionPtr();
    }
    failForUnsupported(name);
}

ServiceTransactionProgress progress(int state, int percent, float detail) {
    ServiceTransactionProgress result;
    result.result = static_cast<EServiceTransactionResult>(state);
    result.progressPercent = percent;
    result.progressDetail = detail;
    return result;
}

} // namespace

ProgressHelper::ProgressHelper(int executingTimeInSeconds) : m_executingTimeInSeconds(executingTimeInSeconds) {}

ProgressHelper::ProgressHelper(int executingTimeInSeconds, boost::optional<int> throwAfterSeconds,
                               boost::exception_ptr exception)
    : m_executingTimeInSeconds(executingTimeInSeconds)
    , m_throwAfterSeconds(throwAfterSeconds)
    , m_exception(std::move(exception)) {}

void ProgressHelper::startProgress() {
    m_startTime = steady_clock::now();
}

ServiceTransactionProgress ProgressHelper::getProgress() {
    BOOST_ASSERT(m_startTime);
    const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(steady_clock::now() - *m_startTime).count();
    if (m_throwAfterSeconds) {
        BOOST_ASSERT(*m_throwAfterSeconds < m_executingTimeInSeconds);
        if (*m_throwAfterSeconds < elapsed) {
            m_state = SERVICE_TRANSACTION_FAILED;
            boost::rethrow_exception(m_exception);
        }
    }
    if (elapsed < m_executingTimeInSeconds) {
        m_state = SERVICE_TRANSACTION_IN_PROGRESS;
        return progress(m_state, static_cast<int>(elapsed * 100 / m_executingTimeInSeconds),
                        static_cast<float>(elapsed));
    }
    m_state = SERVICE_TRANSACTION_SUCCESS;
    return progress(m_state, 100, 0.0F);
}

template <class Archive>
void ProgressHelper::serialize(Archive& archive, unsigned int version) {
    boost::serialization::split_member(archive, *this, version);
}

template <class Archive>
void ProgressHelper::save(Archive& archive, unsigned int) const {
    archive << make_nvp("workingTimeInSeconds", m_executingTimeInSeconds);
    archive << make_nvp("throwAfterSeconds", *m_throwAfterSeconds); // fails an assertion when it is empty
    const std::string name = nameOfException(m_exception);
    archive << make_nvp("Exception", name);
}

template <class Archive>
void ProgressHelper::load(Archive& archive, unsigned int) {
    archive >> make_nvp("workingTimeInSeconds", m_executingTimeInSeconds);
    archive >> make_nvp("throwAfterSeconds", *m_throwAfterSeconds); // fails an assertion when it is empty
    std::string name;
    archive >> make_nvp("Exception", name);
    m_exception = exceptionNamed(name);
}

template void ProgressHelper::serialize(boost::archive::xml_oarchive& archive, unsigned int version);
template void ProgressHelper::serialize(Common::XML::XMLInput& archive, unsigned int version);

} // namespace DAX::Service::ServiceManager
