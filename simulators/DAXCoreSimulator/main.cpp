#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>

#include <boost/exception/diagnostic_information.hpp>
#include <unistd.h>

#include "Common/DBUSWrapper/IDBUSAdapter.h"
#include "Common/Logging/Logging.h"
#include "DAXCoreSimulator/CoreAdapter.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "DAXIPC/IDAXIPC.h"
#include "clients_common/CommandLine.h"

namespace {

using DAX::Common::DBUSWrapper::IDBUSAdapter;
using DAX::Common::DBUSWrapper::IDBUSWrapper;
using namespace DAX::DAXIPC::DBUSLowLevel::DBUSNames::DBUSCore;

const unsigned int LOOK_INTERVAL_IN_SECONDS = 1;
const int WRONG_USAGE = 2;

volatile std::sig_atomic_t stopRequested = 0;

void requestStop(int) {
    stopRequested = 1;
}

std::string underRoot(const std::string& path) {
    const char* root = std::getenv("KOVAN_ROOT");
    return (root != nullptr ? std::string(root) : std::string()) + path;
}

void serve(const std::string& scenario, unsigned int idleTimeout) {
    DAXCoreSimulator::SimulatedCore core(scenario);
    const DAXCoreSimulator::CallJournal journal(underRoot("/var/log/kovan/core-calls.jsonl"));
    const auto handler = std::make_shared<DAXCoreSimulator::CoreAdapter>(core, journal);
    const auto adapter = IDBUSAdapter::createDefaultAdapterFactory()->create(IDBUSWrapper::SYSTEM,
                                                                             DBUSICore::OBJECT_PATH(), handler, false);
    const std::function<bool()> stopCondition = [&handler] {
        if (handler->isToDie()) {
            _exit(DAXCoreSimulator::CoreAdapter::DEATH_STATUS); // the reply was sent when its call was dispatched
        }
        return stopRequested != 0;
    };
    adapter->listenDBUS(LOOK_INTERVAL_IN_SECONDS, idleTimeout, LOOK_INTERVAL_IN_SECONDS, stopCondition, boost::none,
                        DBUSICore::CONNECTION_NAME());
}

} // namespace

int main(int argc, char** argv) {
    clients_common::Program program(
        "DAXCoreSimulator", "A simulated update core: owns the core's name on the system bus and plays a scenario.");
    std::string scenario = underRoot("/etc/kovan/core-scenario.ini");
    unsigned int idleTimeout = 0;
    program.add("--scenario", scenario, "The scenario file, read anew at each createTransaction")
        .existingFile()
        .showsDefault();
    program.add("--idle-timeout", idleTimeout, "End after this many seconds without a client; 0: never").showsDefault();
    if (const auto ended = program.parse(argc, argv)) {
        return *ended;
    }
    std::signal(SIGTERM, requestStop);
    std::signal(SIGINT, requestStop);
    try {
        DAX::Common::Logging::LoggingClass::init("DAXCoreSimulator");
        DAX::DAXIPC::IDAXIPC::initialize();
        serve(scenario, idleTimeout);
        return EXIT_SUCCESS;
    } catch (const DAXCoreSimulator::ScenarioError& error) {
        std::cerr << "DAXCoreSimulator: " << error.what() << std::endl;
        return WRONG_USAGE;
    } catch (const std::exception& error) {
        std::cerr << "DAXCoreSimulator: " << boost::diagnostic_information(error) << std::endl;
        return EXIT_FAILURE;
    }
}
