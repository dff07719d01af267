#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Common/IO/ChecksumedSink.h"
#include "Common/IO/ChecksumedStream.h"
#include "Common/IO/FileSink.h"
#include "Common/IO/FileStream.h"
#include "clients_common/CommandLine.h"
#include "streams/Plain.h"
#include "support/AllocationMeter.h"

// Measures how fast a checksummed file is written and verified, against plain C files with Boost's checksum in chunks
// of the same size. Both take turns, and the medians are compared. The files are in memory where the system has a place
// for that, so that no disk is measured. Then measures the memory that each further chunk takes.

namespace {

using namespace DAX::Common::IO;
using Seconds = std::chrono::duration<double>;

const std::size_t VERIFYING_CHUNK = 1024; // the chunk size of verifyChecksum
const double AIM = 1.10;

using Bytes = std::vector<unsigned char>;

void writeThroughSinks(const std::string& path, const Bytes& data, std::size_t chunkSize) {
    ChecksumedSink sink(std::make_shared<FileSink>(path, true), true);
    for (std::size_t done = 0; done < data.size(); done += chunkSize) {
        sink.writeChunk(data.data() + done, std::min(chunkSize, data.size() - done));
    }
    sink.close();
}

bool verifyThroughStreams(const std::string& path) {
    return ChecksumedStream(std::make_shared<FileStream>(path)).openCheck();
}

double secondsOf(const std::function<void()>& action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return Seconds(std::chrono::steady_clock::now() - begin).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Runs both in turns and returns their medians.
std::pair<double, double> compare(int rounds, const std::function<void()>& plain, const std::function<void()>& ours) {
    std::vector<double> plainTimes;
    std::vector<double> ourTimes;
    for (int round = 0; round < rounds; ++round) {
        plainTimes.push_back(secondsOf(plain));
        ourTimes.push_back(secondsOf(ours));
    }
    return {median(plainTimes), median(ourTimes)};
}

void printRow(const char* name, std::size_t bytes, const std::pair<double, double>& seconds) {
    const double mebibytes = static_cast<double>(bytes) / (1024 * 1024);
    const double ratio = seconds.second / seconds.first;
    std::printf("%-28s %8.0f %8.0f %6.2f  <= %.2f  %s\n", name, mebibytes / seconds.first, mebibytes / seconds.second,
                ratio, AIM, ratio <= AIM ? "met" : "MISSED");
}

void require(bool verified) {
    if (!verified) {
        throw std::runtime_error("a file that was written does not verify");
    }
}

// The heap memory that one more chunk takes: the difference between a long and a short run.
std::size_t allocatedPerChunk(const std::string& path, std::size_t chunkSize) {
    const auto allocated = [&](std::size_t chunks) {
        const Bytes data(chunks * chunkSize, 1);
        const DAX::Tests::AllocationMeter meter;
        writeThroughSinks(path, data, chunkSize);
        require(verifyThroughStreams(path));
        return meter.bytes();
    };
    allocated(1);
    const std::size_t ofOne = allocated(1);
    return (allocated(101) - ofOne) / 100;
}

void run(std::size_t mebibytes, int rounds) {
    const std::filesystem::path memory = "/dev/shm";
    const auto folder = std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    std::string name = (folder / "streams-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make " + name);
    }
    const std::shared_ptr<void> cleaning(nullptr, [&](void*) { std::filesystem::remove_all(name); });
    const std::string path = name + "/file";

    Bytes data(mebibytes * 1024 * 1024);
    std::generate(data.begin(), data.end(), [state = 1U]() mutable {
        state = state * 1664525U + 1013904223U;
        return static_cast<unsigned char>(state >> 24);
    });
    std::printf("%zu MiB, %d rounds, in %s; MiB/s\n%-28s %8s %8s %6s  aim\n", mebibytes, rounds, folder.c_str(),
                "figure", "plain", "ours", "ratio");
    for (const std::size_t chunk : {std::size_t{64 * 1024}, std::size_t{4 * 1024}}) {
        const std::string label = "write, " + std::to_string(chunk / 1024) + " KiB chunks";
        printRow(label.c_str(), data.size(),
                 compare(
                     rounds, [&] { Streams::writePlainly(path, data, chunk); },
                     [&] { writeThroughSinks(path, data, chunk); }));
    }
    printRow("verify, 1 KiB chunks", data.size(),
             compare(
                 rounds, [&] { require(Streams::verifyPlainly(path, VERIFYING_CHUNK)); },
                 [&] { require(verifyThroughStreams(path)); }));
    std::printf("heap taken by each further chunk of 64 KiB, written and verified: %zu bytes\n",
                allocatedPerChunk(path, 64 * 1024));
}

} // namespace

int main(int argc, char** argv) {
    std::size_t mebibytes = 64;
    int rounds = 15;
    clients_common::Program program("benchmark_streams", "Checksummed files against plain ones");
    program.add("--mebibytes", mebibytes, "The size of the file").positive().showsDefault();
    program.add("--rounds", rounds, "How often each is measured").positive().showsDefault();
    if (const auto ended = program.parse(argc, argv)) {
        return *ended;
    }
    try {
        run(mebibytes, rounds);
        return 0;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "benchmark_streams: %s\n", exception.what());
        return 1;
    }
}
