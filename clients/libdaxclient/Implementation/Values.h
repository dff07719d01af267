#pragma once

#include <optional>

#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/optional.hpp>

#include "ServiceInterface/IServiceManager.h"
#include "dax/client.h"

namespace dax::detail {

// The values of the service's interfaces, and those of <dax/client.h> that stand for them.

template <class T>
std::optional<T> toStandard(const boost::optional<T>& value) {
    return value ? std::optional<T>(*value) : std::nullopt;
}

Progress toClient(const DAX::Service::ServiceTransactionProgress& progress);
std::optional<Upgrade> toClient(const DAX::Service::ServiceSearchResult& result);

// Empty for one that is no point in time, as the library of the service knows them as well.
std::optional<LocalTime> toClient(const boost::optional<boost::posix_time::ptime>& time);

} // namespace dax::detail
