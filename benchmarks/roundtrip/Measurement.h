#pragma once

#include <string>
#include <vector>

#include "roundtrip/Client.h"
#include "roundtrip/ProcessFigures.h"

namespace Roundtrip {

// The extent of the measurement.
struct Plan {
    int warmUpCalls = 1000;
    int calls = 20000; // including the warm-up
    int blockLength = 250;
    int activations = 100;
    int otherClients = 1000;
    int callsAmongOthers = 5000;
};

// The results for one server. Times are in microseconds. A ratio is the one to the first server: of
// the medians of two blocks that were measured one right after the other, and of all such ratios the median. The speed
// of the machine changes between blocks, with its clock and its neighbours; within such a pair it hardly does, so that
// a ratio says more than its two times.
struct Figures {
    double median = 0;
    double medianRatio = 0;
    double p99 = 0;
    double cpuPerCall = 0;
    Memory memoryAfterWarmUp;
    Memory memoryAfterCalls;
    double activation = 0;
    double medianAmongOthers = 0;
    double medianAmongOthersRatio = 0;

    double growthAmongOthers() const { return medianAmongOthers / median; }
    double growthAmongOthersRatio() const { return medianAmongOthersRatio / medianRatio; }
};

// Measures all servers side by side: they take turns in short blocks, so that a disturbance affects all of them.
std::vector<Figures> measure(const std::vector<Address>& servers, const Plan& plan);

} // namespace Roundtrip
