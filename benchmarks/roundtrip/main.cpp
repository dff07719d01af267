#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <sys/resource.h>
#include <unistd.h>

#include "roundtrip/BareServer.h"
#include "roundtrip/Measurement.h"
#include "support/PrivateBus.h"
#include "support/TemporaryRoot.h"

// Measures the daemon against a bare libdbus server: the same client, the same bus, the same CPU, in one run.

namespace {

using namespace Roundtrip;

const Address BARE = {"org.kovan.benchmark.bare", "/org/kovan/benchmark/bare", "org.kovan.benchmark.ibare"};
const Address DAEMON = {"org.kovan.tv.dax.service.servicemanager", "/org/kovan/tv/dax/service/cservicemanager",
                        "org.kovan.tv.dax.service.iservicemanager"};

std::string ownPath() {
    char path[PATH_MAX] = {};
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
    return std::string(path, length > 0 ? static_cast<std::size_t>(length) : 0);
}

std::string besideThis(const std::string& program) {
    const std::string path = ownPath();
    return path.substr(0, path.rfind('/') + 1) + program;
}

void allowManyConnections() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

void printRow(const char* figure, const char* unit, const char* aim, double bare, double daemon) {
    std::printf("%-44s %-4s %8s %12.1f %12.1f %8.2f\n", figure, unit, aim, bare, daemon, daemon / bare);
}

void printTable(const std::string& title, const Figures& bare, const Figures& daemon) {
    std::printf("\n%s\n%-44s %-4s %8s %12s %12s %8s\n", title.c_str(), "figure", "unit", "aim", "bare", "DAXService",
                "ratio");
    printRow("round trip, median", "us", "<= 1.15", bare.median, daemon.median);
    printRow("round trip, 99th percentile", "us", "", bare.p99, daemon.p99);
    printRow("server CPU per call", "us", "", bare.cpuPerCall, daemon.cpuPerCall);
    printRow("private dirty memory after the warm-up", "kB", "", bare.memoryAfterWarmUp.privateDirtyKb,
             daemon.memoryAfterWarmUp.privateDirtyKb);
    printRow("private dirty memory after all calls", "kB", "no more", bare.memoryAfterCalls.privateDirtyKb,
             daemon.memoryAfterCalls.privateDirtyKb);
    printRow("PSS after the warm-up", "kB", "", bare.memoryAfterWarmUp.pssKb, daemon.memoryAfterWarmUp.pssKb);
    printRow("PSS after all calls", "kB", "no more", bare.memoryAfterCalls.pssKb, daemon.memoryAfterCalls.pssKb);
    printRow("cold activation to the first reply, median", "us", "", bare.activation, daemon.activation);
    printRow("round trip among the other clients, median", "us", "", bare.medianAmongOthers, daemon.medianAmongOthers);
    printRow("the same, of the one without them", "%", "", 100 * bare.growthAmongOthers(),
             100 * daemon.growthAmongOthers());
    std::fflush(stdout);
}

void measureWithLog(const std::string& title, const std::string& log, const std::string& server, const Plan& plan) {
    setenv("KOVAN_DLOG", log.c_str(), 1);
    DAX::Tests::PrivateBus bus;
    bus.addService(BARE.connectionName, ownPath() + " --bare");
    bus.addService(DAEMON.connectionName, server);
    const std::vector<Figures> figures = measure({BARE, DAEMON}, plan);
    printTable(title, figures.at(0), figures.at(1));
}

void run(const std::string& server, const Plan& plan) {
    pinToOneCpu();
    allowManyConnections();
    const DAX::Tests::TemporaryRoot root;
    root.write("etc/kovan/device.ini", "[software]\nproduction=true\n");
    std::printf("%d round trips (warm-up %d), %d activations, %d other clients; all on one CPU\n", plan.calls,
                plan.warmUpCalls, plan.activations, plan.otherClients);
    measureWithLog("Without a log", "none", server, plan);
    measureWithLog("With the log in a file", (root / "log").string(), server, plan);
}

} // namespace

int main(int argc, char** argv) {
    Plan plan;
    std::string server = besideThis("DAXService");
    bool bare = false;
    CLI::App options("Measures DAXService against a bare libdbus server.");
    options.add_option("--server", server, "the program that serves the service manager")->capture_default_str();
    options.add_option("--calls", plan.calls, "round trips, those of the warm-up included")->capture_default_str();
    options.add_option("--activations", plan.activations, "cold starts")->capture_default_str();
    options.add_option("--clients", plan.otherClients, "other clients connected")->capture_default_str();
    options.add_flag("--bare", bare, "be the bare server");
    CLI11_PARSE(options, argc, argv);
    if (bare) {
        return runBareServer(BARE.connectionName, BARE.objectPath);
    }
    try {
        run(server, plan);
        return 0;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "%s\n", exception.what());
        return 1;
    }
}
