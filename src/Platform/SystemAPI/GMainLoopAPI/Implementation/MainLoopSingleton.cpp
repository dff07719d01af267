#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"

#include <utility>

#include "Utility/Utils/DAXAssert.h"
#include "Utility/Utils/SingletonsRegister.h"

namespace DAX::Platform::MainLoop {

using Common::Utils::RegisterableSingleton;
using Common::Utils::SingletonsRegister;

std::shared_ptr<RegisterableSingleton> MainLoopSingleton::create() {
    return SingletonsRegister::defaultFactory<MainLoopSingleton>();
}

void MainLoopSingleton::initialize() {
    checkValidity();
    m_implementation->initialize();
}

bool MainLoopSingleton::isInitialized() const {
    checkValidity();
    return m_implementation->isInitialized();
}

boost::thread::id MainLoopSingleton::getMainLoopThreadId() const {
    checkValidity();
    return m_implementation->getMainLoopThreadId();
}

void MainLoopSingleton::dispatchInMainLoop(void* data) {
    checkValidity();
    m_implementation->dispatchInMainLoop(data);
}

std::unique_ptr<UserRegisteredCallback> MainLoopSingleton::createUserRegisteredCallback() {
    checkValidity();
    return m_implementation->createUserRegisteredCallback();
}

void MainLoopSingleton::setMainLoopImplementation(std::unique_ptr<MainLoopSingleton> implementation) {
    m_implementation = std::move(implementation);
}

void MainLoopSingleton::checkValidity() const {
    BOOST_ASSERT_MSG(m_implementation != nullptr, "The main loop has no implementation.");
}

} // namespace DAX::Platform::MainLoop
