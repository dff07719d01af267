#include "Platform/SystemAPI/GMainLoopAPI/Implementation/GLoopService.h"
#include "Platform/SystemAPI/GMainLoopAPI/MainLoop.h"
#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"
#include "Utility/Utils/SingletonsRegister.h"

namespace DAX::Platform::MainLoop {
namespace {

using Common::Utils::SingletonPointer;
using Common::Utils::SingletonsRegister;

SingletonPointer<MainLoopSingleton> mainLoop(const char* user) {
    return SingletonsRegister::getSingletonsRegister().getService<MainLoopSingleton>(user, MainLoopSingleton::getID());
}

} // namespace

void initializeMainLoop() {
    SingletonPointer<MainLoopSingleton> singleton = mainLoop("initializeMainLoop");
    singleton->setMainLoopImplementation(std::make_unique<GLoopService>());
    singleton->initialize();
}

bool isRunningInMainLoop() {
    return boost::this_thread::get_id() == mainLoop("isRunningInMainLoop")->getMainLoopThreadId();
}

bool isMainLoopInitialized() {
    return mainLoop("isMainLoopInitialized")->isInitialized();
}

boost::thread::id getMainLoopTheadId() {
    return mainLoop("getMainLoopThead")->getMainLoopThreadId();
}

} // namespace DAX::Platform::MainLoop
