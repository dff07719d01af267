#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffCbDistributor.h"

#include <boost/exception/diagnostic_information.hpp>

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffCbLowLevelSubscriber.h"
#include "Utility/Utils/UserDataRegister.h"

namespace DAX::Platform {

using Common::Utils::SignalSubscriber;
using Common::Utils::UserDataRegister;

PowerOffCbDistributor::~PowerOffCbDistributor() {
    try {
        if (SignalSubscriber<int(int)>* const subscriber = lowLevelSubscriber()) {
            subscriber->unsubscribe();
        }
    } catch (...) {
        DAX_LOG(ERR) << "Exception was caught in PowerOffCbLowLevelSubscriber: "
                     << boost::current_exception_diagnostic_information(true);
    }
}

std::unique_ptr<SignalSubscriber<int(int)>> PowerOffCbDistributor::doCreateLowLevelSubscriber() {
    return std::make_unique<PowerOffCbLowLevelSubscriber>();
}

std::function<int(int)> PowerOffCbDistributor::doGetMultiCallback() {
    return [this](int state) { return multiCallback(state); };
}

int PowerOffCbDistributor::multiCallback(int state) {
    for (void* const id : subscribers()) { // a copy: a callback may subscribe or unsubscribe
        UserDataRegister::GenericFunctorCallback<int(int)>::call<0>(state, id);
    }
    return 0;
}

} // namespace DAX::Platform
