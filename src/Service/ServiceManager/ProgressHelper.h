#pragma once

#include <chrono>

#include <boost/exception_ptr.hpp>
#include <boost/optional.hpp>

#include "ServiceInterface/ServiceTransactionProgress.h"

namespace boost::serialization {
class access;
} // namespace boost::serialization

namespace DAX::Service::ServiceManager {

// One step of a played scenario: it runs for a time, then it is done, unless it fails before. Times are in seconds by
// the steady clock. One thread at a time.
//
// As an XML archive it has its working time, the time of its failure and the name of what it throws then. A helper that
// cannot fail has no such form: to write it, or to read one into it, is an assertion failure behind the working time.
class ProgressHelper {
public:
    explicit ProgressHelper(int executingTimeInSeconds);

    // Throws `exception` once more than `throwAfterSeconds` have gone, which have to be fewer than the step has.
    ProgressHelper(int executingTimeInSeconds, boost::optional<int> throwAfterSeconds, boost::exception_ptr exception);

    // From now on. May be called again, which starts it anew.
    void startProgress();

    // Before startProgress() it is an assertion failure.
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
