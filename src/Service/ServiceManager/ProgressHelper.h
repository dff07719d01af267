#pragma once

#include <chrono>

#include <boost/exception_ptr.hpp>
#include <boost/optional.hpp>

#include "ServiceInterface/ServiceTransactionProgress.h"

namespace boost::serialization {
class access;
} // namespace boost::serialization

namespace DAX::Service::ServiceManager {

// One step of a played scenario: it runs for some time and is then done, unless it fails before. Times are in seconds
// of the steady clock. One thread at a time.
//
// An XML archive holds the working time, the time of the failure and the name of the exception. A helper that cannot
// fail cannot be stored: to write it, or to read an archive into it, fails an assertion after the working time.
class ProgressHelper {
public:
    explicit ProgressHelper(int executingTimeInSeconds);

    // Throws `exception` once more than `throwAfterSeconds` have passed. They must be fewer than the step takes, or an
    // assertion fails in getProgress().
    ProgressHelper(int executingTimeInSeconds, boost::optional<int> throwAfterSeconds, boost::exception_ptr exception);

    // Starts the step; a second call restarts it.
    void startProgress();

    // Fails an assertion before startProgress().
    ServiceTransactionProgress getProgress();

private:
    friend class boost::serialization::access;
    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
    template <class Archive>
    void save(Archive& archive, unsigned int version) const;
    template <class Archive>
    void load(Archive& archive, unsigned int version);

    int m_executingTimeInSeconds;
    boost::optional<std::chrono::steady_clock::time_point> m_startTime;
    int m_state = SERVICE_TRANSACTION_IN_PROGRESS;
    boost::optional<int> m_throwAfterSeconds;
    boost::exception_ptr m_exception;
};

} // namespace DAX::Service::ServiceManager
