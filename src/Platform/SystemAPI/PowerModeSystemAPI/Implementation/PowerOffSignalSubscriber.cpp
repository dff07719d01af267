#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffSignalSubscriber.h"

#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerModes.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/Implementation/PowerOffCbDistributor.h"

namespace DAX::Platform {
namespace {

using Common::Utils::SingletonPointer;
using Common::Utils::SingletonsRegister;

const char NAME[] = "PowerOffSignalSubscriber";

SingletonPointer<PowerOffCbDistributor> distributor() {
    return SingletonsRegister::getSingletonsRegister().getService<PowerOffCbDistributor>(
        NAME, PowerOffCbDistributor::getID());
}

} // namespace

PowerOffSignalSubscriber::~PowerOffSignalSubscriber() {
    unsubscribeAtEnd(NAME); // while the distributor still exists
    if (m_distributorId) {
        SingletonsRegister::getSingletonsRegister().unmarkNeeded(*m_distributorId);
    }
}

void PowerOffSignalSubscriber::needDistributor() {
    SingletonsRegister::getSingletonsRegister().markNeeded<PowerOffCbDistributor>(
        PowerOffCbDistributor::getID(), SingletonsRegister::defaultFactory<PowerOffCbDistributor>);
    m_distributorId = PowerOffCbDistributor::getID();
}

void* PowerOffSignalSubscriber::doRegisterCallback() {
    return registerWrapper(NAME, [this](int state) { return callWrappedCb(state); });
}

void PowerOffSignalSubscriber::doSubscribe() {
    SingletonPointer<PowerOffCbDistributor> pointer = distributor();
    pointer->initialize();
    pointer->subscribe(callbackId());
}

int PowerOffSignalSubscriber::doUnsubscribe() {
    distributor()->unsubscribe(callbackId());
    return 0;
}

int PowerOffSignalSubscriber::callWrappedCb(int state) {
    DAX_LOG(INF) << "Power Off signal received.";
    const DAXCommon::PowerMode mode = toPowerMode(state);
    userCallback()(mode);
    return 0;
}

} // namespace DAX::Platform
