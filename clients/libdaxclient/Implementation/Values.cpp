#include "libdaxclient/Implementation/Values.h"

namespace dax::detail {

using namespace DAX::Service;

Progress toClient(const ServiceTransactionProgress& progress) {
    return {static_cast<State>(progress.result), progress.progressPercent, toStandard(progress.progressDetail)};
}

std::optional<Upgrade> toClient(const ServiceSearchResult& result) {
    if (result.result != SERVICE_TRANSACTION_SUCCESS || !result.upgrade) {
        return std::nullopt;
    }
    const SingleUpgradeDescription& found = *result.upgrade;
    return Upgrade{
        static_cast<UpgradeType>(found.upgradeType), found.upgradeId, toStandard(found.version), found.updateInfo,
        static_cast<UpgradeKind>(found.kind),        found.scope};
}

std::optional<LocalTime> toClient(const boost::optional<boost::posix_time::ptime>& time) {
    if (!time || time->is_special()) {
        return std::nullopt;
    }
    const auto date = time->date().year_month_day();
    const auto clock = time->time_of_day();
    LocalTime local;
    local.year = date.year;
    local.month = date.month;
    local.day = date.day;
    local.hour = static_cast<int>(clock.hours());
    local.minute = static_cast<int>(clock.minutes());
    local.second = static_cast<int>(clock.seconds());
    local.fraction = std::chrono::microseconds(clock.total_microseconds() % 1000000);
    return local;
}

} // namespace dax::detail
