// Prints what the system finds in fixed places of a device.
#include <iostream>

#include <boost/exception/diagnostic_information.hpp>

#include "Platform/Product/IProductInfo.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"

using namespace DAX::Platform;

int main() {
    try {
        std::cout << "version " << IProductInfo::getKovanVersionString() << '\n'
                  << "standalone " << ISystemControl::isInStandaloneMode() << '\n'
                  << "partition " << IProductPaths::getDAXPartitionPath().string() << '\n';
        return 0;
    } catch (...) {
        std::cerr << boost::current_exception_diagnostic_information(true);
        return 1;
    }
}
