#include "roundtrip/LibraryCost.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <time.h>

#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXServiceProxy/CServiceManagerProxyFactory.h"
#include "DAXIPC/IDAXIPC.h"
#include "dax/client.h"

namespace Roundtrip {

namespace {

double threadMicroseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

template <class Call>
double costOfBlock(int length, const Call& call) {
    const double begin = threadMicroseconds();
    for (int i = 0; i < length; ++i) {
        call();
    }
    return (threadMicroseconds() - begin) / length;
}

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

LibraryCost measureLibraryCost(int calls, int blockLength) {
    DAX::DAXIPC::IDAXIPC::initialize();
    const auto manager = DAX::DAXIPC::DBUSLowLevel::CServiceManagerProxyFactory(
                             DAX::Common::DBUSWrapper::IDBUSProxy::createDefaultProxyFactory())
                             .create();
    dax::Client client("benchmark");
    const auto byProxies = [&manager] {
        auto priority = DAX::DAXCommon::PRIORITY_NO_SESSION;
        std::string name;
        auto type = DAX::DAXCommon::TRANSACTION_TYPE_DATED_SEARCH;
        manager->getServiceOwner(priority, name, type);
    };
    const auto byLibrary = [&client] { client.owner(); };
    costOfBlock(blockLength, byProxies); // both are warm then
    costOfBlock(blockLength, byLibrary);
    std::vector<double> proxies;
    std::vector<double> library;
    std::vector<double> ratios;
    for (int i = 0; i < std::max(1, calls / blockLength); ++i) {
        const bool libraryFirst = i % 2 != 0;
        const double early = libraryFirst ? costOfBlock(blockLength, byLibrary) : costOfBlock(blockLength, byProxies);
        const double late = libraryFirst ? costOfBlock(blockLength, byProxies) : costOfBlock(blockLength, byLibrary);
        proxies.push_back(libraryFirst ? late : early);
        library.push_back(libraryFirst ? early : late);
        ratios.push_back(library.back() / proxies.back());
    }
    return {medianOf(proxies), medianOf(library), medianOf(ratios)};
}

} // namespace Roundtrip
