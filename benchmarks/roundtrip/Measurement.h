#pragma once

#include <string>
#include <vector>

#include "roundtrip/Client.h"
#include "roundtrip/ProcessFigures.h"

namespace Roundtrip {

// How much is measured.
struct Plan {
    int warmUpCalls = 1000;
    int calls = 20000; // those of the warm-up included
    int blockLength = 250;
    int activations = 100;
    int otherClients = 1000;
    int callsAmongOthers = 5000;
};

// What one server was found to do. Times in microseconds.
struct Figures {
    double median = 0;
    double p99 = 0;
    double cpuPerCall = 0;
    Memory memoryAfterWarmUp;
    Memory memoryAfterCalls;
    double activation = 0;
    double medianAmongOthers = 0;

    double growthAmongOthers() const { return medianAmongOthers / median; }
};

// Measures all servers side by side: they take turns in short blocks, so that what disturbs one disturbs all.
std::vector<Figures> measure(const std::vector<Address>& servers, const Plan& plan);

} // namespace Roundtrip
