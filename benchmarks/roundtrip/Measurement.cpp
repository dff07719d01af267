#include "roundtrip/Measurement.h"

#include <algorithm>
#include <memory>

namespace Roundtrip {
namespace {

// One server during the measurement.
struct Subject {
    explicit Subject(const Address& server) : address(server), client(server) {}

    Address address;
    Client client;
    Figures figures;
};

using Subjects = std::vector<std::unique_ptr<Subject>>;
using Samples = std::vector<double>;

double quantile(Samples samples, double part) {
    const auto at = samples.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(samples.size() - 1));
    std::nth_element(samples.begin(), at, samples.end());
    return *at;
}

void repeat(int times, Client& client, Samples& samples) {
    for (int i = 0; i < times; ++i) {
        samples.push_back(client.call());
    }
}

// The samples of each subject. They are taken in alternating blocks, and the subject that begins alternates as well.
std::vector<Samples> callInTurns(Subjects& subjects, int calls, int blockLength) {
    std::vector<Samples> samples(subjects.size());
    bool forwards = true;
    for (int done = 0; done < calls; done += blockLength, forwards = !forwards) {
        for (std::size_t turn = 0; turn < subjects.size(); ++turn) {
            const std::size_t i = forwards ? turn : subjects.size() - 1 - turn;
            repeat(std::min(blockLength, calls - done), subjects[i]->client, samples[i]);
        }
    }
    return samples;
}

// The median, over all pairs of blocks, of the ratio of their medians. Of a tail it would tell nothing, as calls that
// are slow in fewer than half of the blocks vanish.
double ratioOfMedians(const Samples& samples, const Samples& yardstick, int blockLength) {
    Samples ratios;
    const auto length = static_cast<std::size_t>(blockLength);
    for (std::size_t begin = 0; begin < samples.size(); begin += length) {
        const auto block = [begin, end = std::min(begin + length, samples.size())](const Samples& all) {
            return Samples(all.begin() + static_cast<std::ptrdiff_t>(begin),
                           all.begin() + static_cast<std::ptrdiff_t>(end));
        };
        ratios.push_back(quantile(block(samples), 0.5) / quantile(block(yardstick), 0.5));
    }
    return quantile(ratios, 0.5);
}

void measureActivation(Subjects& subjects, const Plan& plan) {
    std::vector<Samples> samples(subjects.size());
    for (int run = 0; run < plan.activations; ++run) {
        for (std::size_t i = 0; i < subjects.size(); ++i) {
            subjects[i]->client.endServer();
            samples[i].push_back(subjects[i]->client.call());
        }
    }
    for (std::size_t i = 0; i < subjects.size(); ++i) {
        subjects[i]->figures.activation = quantile(samples[i], 0.5);
        subjects[i]->client.endServer(); // so that the next measurement starts with a fresh process
    }
}

void measureRoundTrips(Subjects& subjects, const Plan& plan) {
    callInTurns(subjects, plan.warmUpCalls, plan.blockLength);
    std::vector<pid_t> pids;
    std::vector<std::uint64_t> cpuBefore;
    for (const auto& subject : subjects) {
        pids.push_back(subject->client.serverPid());
        cpuBefore.push_back(cpuNanosecondsOf(pids.back()));
        subject->figures.memoryAfterWarmUp = memoryOf(pids.back());
    }
    const int calls = plan.calls - plan.warmUpCalls;
    const std::vector<Samples> samples = callInTurns(subjects, calls, plan.blockLength);
    for (std::size_t i = 0; i < subjects.size(); ++i) {
        Figures& figures = subjects[i]->figures;
        figures.median = quantile(samples[i], 0.5);
        figures.medianRatio = ratioOfMedians(samples[i], samples[0], plan.blockLength);
        figures.p99 = quantile(samples[i], 0.99);
        figures.cpuPerCall = static_cast<double>(cpuNanosecondsOf(pids[i]) - cpuBefore[i]) / 1000 / calls;
        figures.memoryAfterCalls = memoryOf(pids[i]);
    }
}

// Each of the other connections is a client of every server.
void measureAmongOthers(Subjects& subjects, const Plan& plan) {
    std::vector<DAX::Tests::RawPeer> others(static_cast<std::size_t>(plan.otherClients));
    for (DAX::Tests::RawPeer& other : others) {
        for (const auto& subject : subjects) {
            other.call(*makeCall(subject->address));
        }
    }
    const std::vector<Samples> samples = callInTurns(subjects, plan.callsAmongOthers, plan.blockLength);
    for (std::size_t i = 0; i < subjects.size(); ++i) {
        Figures& figures = subjects[i]->figures;
        figures.medianAmongOthers = quantile(samples[i], 0.5);
        figures.medianAmongOthersRatio = ratioOfMedians(samples[i], samples[0], plan.blockLength);
    }
}

} // namespace

std::vector<Figures> measure(const std::vector<Address>& servers, const Plan& plan) {
    Subjects subjects;
    for (const Address& server : servers) {
        subjects.push_back(std::make_unique<Subject>(server));
    }
    measureActivation(subjects, plan);
    measureRoundTrips(subjects, plan);
    measureAmongOthers(subjects, plan);
    std::vector<Figures> result;
    for (const auto& subject : subjects) {
        subject->client.endServer();
        result.push_back(subject->figures);
    }
    return result;
}

} // namespace Roundtrip
