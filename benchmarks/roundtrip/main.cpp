#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

#include "clients_common/CommandLine.h"
#include "roundtrip/BareServer.h"
#include "roundtrip/LibraryCost.h"
#include "roundtrip/Measurement.h"
#include "support/PrivateBus.h"
#include "support/TemporaryRoot.h"

// Measures the daemon against a bare libdbus server that answers every call with the same three byte arrays: with the
// same client, on the same bus and the same CPU, in one run. The servers take turns in short blocks; each begins every
// other block. Memory figures come from smaps_rollup, CPU figures from schedstat. A cold activation is the first call
// to a name whose server has just been ended, with a warm page cache. Everything is then measured again with the log
// going to a file. At the end, libdaxclient is measured against the proxies that it stands on.

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

// What an aim limits: the ratio of a figure to the bare server's, or the daemon's own value.
struct Aim {
    enum class Of { RATIO, VALUE, NOTHING };

    Of of;
    double limit;
};

const Aim NO_AIM = {Aim::Of::NOTHING, 0};

Aim ratioUpTo(double limit) {
    return {Aim::Of::RATIO, limit};
}

std::string aimText(const Aim& aim) {
    char text[32] = "";
    if (aim.of == Aim::Of::RATIO) {
        std::snprintf(text, sizeof(text), "ratio <= %.2f", aim.limit);
    } else if (aim.of == Aim::Of::VALUE) {
        std::snprintf(text, sizeof(text), "<= %.0f", aim.limit);
    }
    return text;
}

void printRow(const char* figure, const char* unit, double bare, double daemon, double ratio, const Aim& aim) {
    const double held = aim.of == Aim::Of::RATIO ? ratio : daemon;
    const char* const verdict = aim.of == Aim::Of::NOTHING ? "" : held <= aim.limit ? "met" : "MISSED";
    char ratioText[16] = "-"; // there is no ratio to 0
    if (bare > 0) {
        std::snprintf(ratioText, sizeof(ratioText), "%.2f", ratio);
    }
    std::printf("%-42s %-4s %10.1f %10.1f %7s  %-14s %s\n", figure, unit, bare, daemon, ratioText, aimText(aim).c_str(),
                verdict);
}

void printRow(const char* figure, const char* unit, double bare, double daemon, const Aim& aim) {
    printRow(figure, unit, bare, daemon, daemon / bare, aim);
}

void printTable(const std::string& title, const Figures& bare, const Figures& daemon) {
    const auto value = [](double limit) { return Aim{Aim::Of::VALUE, limit}; };
    std::printf("\n%s\n%-42s %-4s %10s %10s %7s  %s\n", title.c_str(), "figure", "unit", "bare", "DAXService", "ratio",
                "aim");
    printRow("round trip, median", "us", bare.median, daemon.median, daemon.medianRatio, ratioUpTo(1.15));
    printRow("round trip, 99th percentile", "us", bare.p99, daemon.p99, ratioUpTo(1.2));
    printRow("server CPU per call", "us", bare.cpuPerCall, daemon.cpuPerCall, ratioUpTo(1.5));
    printRow("private dirty memory after the warm-up", "kB", bare.memoryAfterWarmUp.privateDirtyKb,
             daemon.memoryAfterWarmUp.privateDirtyKb, NO_AIM);
    printRow("private dirty memory after all calls", "kB", bare.memoryAfterCalls.privateDirtyKb,
             daemon.memoryAfterCalls.privateDirtyKb, value(800));
    printRow("its growth since the warm-up", "kB",
             bare.memoryAfterCalls.privateDirtyKb - bare.memoryAfterWarmUp.privateDirtyKb,
             daemon.memoryAfterCalls.privateDirtyKb - daemon.memoryAfterWarmUp.privateDirtyKb, value(0));
    printRow("PSS after all calls", "kB", bare.memoryAfterCalls.pssKb, daemon.memoryAfterCalls.pssKb, value(6 * 1024));
    printRow("cold activation to the first reply, median", "us", bare.activation, daemon.activation, ratioUpTo(1.6));
    printRow("round trip among the other clients, median", "us", bare.medianAmongOthers, daemon.medianAmongOthers,
             daemon.medianAmongOthersRatio, NO_AIM);
    printRow("the same, of the one without them", "%", 100 * bare.growthAmongOthers(), 100 * daemon.growthAmongOthers(),
             daemon.growthAmongOthersRatio(), ratioUpTo(1.15));
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

void measureLibrary(const std::string& server, const Plan& plan) {
    setenv("KOVAN_DLOG", "none", 1);
    DAX::Tests::PrivateBus bus;
    bus.addService(DAEMON.connectionName, server);
    const LibraryCost cost = measureLibraryCost(plan.calls, plan.blockLength);
    std::printf("\nThe client's own side\n%-42s %-4s %10s %10s %7s  %s\n", "figure", "unit", "proxies", "library",
                "ratio", "aim");
    printRow("client CPU per call, median", "us", cost.byProxies, cost.byLibrary, cost.ratio, ratioUpTo(1.15));
}

void run(const std::string& server, const Plan& plan) {
    pinToOneCpu();
    allowManyConnections();
    const DAX::Tests::TemporaryRoot root;
    root.write("etc/kovan/device.ini", "[software]\nproduction=true\n");
    std::printf("%d round trips (warm-up %d), %d activations, %d other clients; all on one CPU\n", plan.calls,
                plan.warmUpCalls, plan.activations, plan.otherClients);
    std::printf(
        "The ratio of two medians of round trips is the median over blocks of calls, each pair of blocks measured "
        "one after the other.\n");
    measureWithLog("Without a log", "none", server, plan);
    measureWithLog("With the log in a file", (root / "log").string(), server, plan);
    measureLibrary(server, plan);
}

} // namespace

int main(int argc, char** argv) {
    Plan plan;
    std::string server = besideThis("DAXService");
    bool bare = false;
    clients_common::Program options("benchmark_roundtrip", "Measures DAXService against a bare libdbus server.");
    options.add("--server", server, "the program that serves the service manager").showsDefault();
    options.add("--calls", plan.calls, "round trips, those of the warm-up included").showsDefault();
    options.add("--activations", plan.activations, "cold starts").showsDefault();
    options.add("--clients", plan.otherClients, "other clients connected").showsDefault();
    options.addFlag("--bare", bare, "be the bare server");
    if (const auto ended = options.parse(argc, argv)) {
        return *ended;
    }
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
