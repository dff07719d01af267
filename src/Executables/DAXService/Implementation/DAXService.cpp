#include <memory>
#include <mutex>

#include <boost/exception/diagnostic_information.hpp>
#include <boost/thread/thread.hpp>
#include <malloc.h>
#include <sys/stat.h>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "Common/DBUSWrapper/IDBUSProxy.h"
#include "Common/Logging/LoggingStream.h"
#include "DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/DAXIPCServiceManagerAdapter.h"
#include "DAXIPC/DBUSLowLevel/Proxies/DAXCoreProxy/CCoreProxyFactory.h"
#include "DAXIPC/IDAXIPC.h"
#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"
#include "Debug/DebugCommon/ConsolePosition.h"
#include "Debug/DebugCommon/DebugThreadName.h"
#include "Executables/DaemonHelpers/DaemonHelpers.h"
#include "Platform/OperatingSystem/OSSignals.h"
#include "Platform/OperatingSystem/SignalThread.h"
#include "Platform/Product/IProductInfo.h"
#include "Platform/SystemAPI/GMainLoopAPI/MainLoop.h"
#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"
#include "Platform/SystemAPI/PowerModeSystemAPI/CPowerModeSubscribersFactory.h"
#include "Platform/SystemAPI/SystemControlSystemAPI/ISystemControl.h"
#include "Platform/SystemAPI/SystemdSystemAPI/HangGuard.h"
#include "Platform/SystemAPI/TimerUtilsSystemAPI/BootClockInitializer.h"
#include "Platform/SystemAPI/VIPProcessSystemAPI/VIPProcessSystemAPI.h"
#include "Service/ServiceManager/CServiceManagerFactory.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "Utility/Utils/UserDataRegister.h"

namespace {

using namespace DAX;
using Common::DBUSWrapper::IDBUSAdapter;
using Common::DBUSWrapper::IDBUSProxy;
using Common::Logging::LoggingClass;
using Common::Utils::SingletonServiceGuard;
using Common::Utils::UserDataRegister;
using DAXIPC::IDAXIPC;
using DAXIPC::DBUSLowLevel::CCoreProxyFactory;
using DAXIPC::DBUSLowLevel::DAXIPCServiceManagerAdapter;
using Platform::NiceQuitHelper;
using Platform::MainLoop::MainLoopSingleton;

const char CONSOLE[] = "DAXServiceConsole";
const unsigned int CORE_ACTIVATION_TIMEOUT_IN_SECONDS = 50;
const int WATCHDOG_LIMIT_IN_SECONDS = 300;
const unsigned int STOP_CONDITION_INTERVAL_IN_SECONDS = 3;
const unsigned int NO_IDLE_TIMEOUT = 0;

// Only the daemon's user may write the files that it makes, whatever umask it was started with.
void keepOthersFromWriting() {
    umask(umask(0) | S_IWGRP | S_IWOTH);
}

// Small pieces of memory that are freed are merged with their neighbours, but for the few that each thread keeps. The
// allocator would otherwise keep all of them apart, and a row of calls, each of which needs a piece of another size
// than the last one left, would make the heap grow by some bytes a call.
void mergeFreedMemoryAtOnce() {
    mallopt(M_MXFAST, 0);
}

bool wasSigTermReceived() {
    const std::lock_guard<std::mutex> lock(NiceQuitHelper::s_mutex);
    return NiceQuitHelper::s_sigTermFlag;
}

// The start, one line for each step; at its end the objects are destroyed in reverse order. Returns whether SIGTERM
// ended it.
bool serve(int argc, char** argv) {
    keepOthersFromWriting();
    mergeFreedMemoryAtOnce();
    LoggingClass::init("DAXService");
    Common::Debug::ThreadDebug::registerMainThreadId(boost::this_thread::get_id());
    const Platform::SignalThread signalThread;
    const NiceQuitHelper signalHandlers;
    Platform::VIPProcessSystemAPI::registerVIPProcess();
    Common::Debug::RestoreConsolePosition(CONSOLE);
    const SingletonServiceGuard<UserDataRegister> userDataRegister;
    const SingletonServiceGuard<MainLoopSingleton> mainLoop(MainLoopSingleton::create);
    Platform::MainLoop::initializeMainLoop();
    IDAXIPC::initialize();
    const SingletonServiceGuard<Platform::BootClockInitializer> bootClock;
    Platform::IProductInfo::initializeProduct();
    DAX_LOG(INF) << "Starting DAXService" << Platform::ISystemControl::DAXRevisionDescription();
    DAXCommon::DebugAndTestParameters::loadDebugAndTestParameters();
    const std::shared_ptr<IDBUSProxy::IDBUSProxyFactory> proxyFactory = IDBUSProxy::createDefaultProxyFactory();
    const auto coreFactory = std::make_shared<CCoreProxyFactory>(proxyFactory, CORE_ACTIVATION_TIMEOUT_IN_SECONDS);
    const auto powerModeFactory = std::make_shared<Platform::CPowerModeSubscribersFactory>();
    const auto serviceManagerFactory = std::make_shared<Service::CServiceManagerFactory>(coreFactory, powerModeFactory);
    DAXIPCServiceManagerAdapter adapter(IDBUSAdapter::createDefaultAdapterFactory());
    Platform::HangGuard::initWatchdogTimer(WATCHDOG_LIMIT_IN_SECONDS);
    const int idleTimeout = DaemonHelpers::parseIdleTimeout(argc, argv, NO_IDLE_TIMEOUT);
    adapter.listenDBUS(serviceManagerFactory, STOP_CONDITION_INTERVAL_IN_SECONDS,
                       static_cast<unsigned int>(idleTimeout),
                       static_cast<unsigned int>(DaemonHelpers::getWatchdogPingInterval()),
                       DaemonHelpers::getExitCheckingFunction(), DaemonHelpers::getWatchdogPingingFunction());

    const bool terminated = wasSigTermReceived();
    if (terminated) {
        DAX_LOG(INF) << "Exit From DAXService after receiving SIGTERM.";
    }
    return terminated;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (serve(argc, argv)) {
            return 1;
        }
        DAX_LOG(INF) << "Exit From DAXService";
        Common::Debug::SaveConsolePosition(CONSOLE);
        return 0;
    } catch (...) {
        DAX_LOG(FTL) << "Exception caught in DAXService: " << boost::current_exception_diagnostic_information(true);
        return 1;
    }
}
