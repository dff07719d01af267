// An upgrade over the network, with its progress, until Ctrl-C.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include <dax/client.h>
#include <pthread.h>

namespace {

// Waits for Ctrl-C on a thread of its own: a signal handler may not call the library. Made before all other threads, so
// that they inherit its signal mask.
class CtrlC {
public:
    explicit CtrlC(dax::StopSource& stop) {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGINT);
        pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
        std::thread([signals = m_signals, stop]() mutable {
            int signal = 0;
            sigwait(&signals, &signal);
            stop.requestStop("The user has pressed Ctrl-C.");
        }).detach();
    }

private:
    sigset_t m_signals;
};

dax::Waiting showing(const char* step, const dax::StopSource& stop) {
    dax::Waiting waiting;
    waiting.onProgress = [step](const dax::Progress& progress) { std::printf("%s: %d %%\n", step, progress.percent); };
    waiting.stop = stop.token();
    return waiting;
}

int upgrade(const dax::StopSource& stop) {
    dax::Client client("upgrade example");
    dax::Session session = client.request(dax::Priority(3));
    dax::Transaction transaction = session.start(dax::UpgradeType::OTN);

    const dax::Found found = transaction.search("", showing("search", stop));
    if (found.outcome != dax::Outcome::SUCCEEDED) {
        std::puts("The search has not succeeded.");
        return EXIT_FAILURE;
    }
    if (!found.upgrade) {
        std::puts("There is nothing to install.");
        return EXIT_SUCCESS;
    }
    std::printf("found version %s\n", found.upgrade->version.value_or("without a number").c_str());
    if (transaction.install({}, showing("installation", stop)) != dax::Outcome::SUCCEEDED) {
        std::puts("The installation has not succeeded.");
        return EXIT_FAILURE;
    }
    // From here on the service refuses everyone until the installation lock is removed.
    if (transaction.finalize({}, false, showing("finalization", stop)) != dax::Outcome::SUCCEEDED) {
        std::puts("The finalization has not succeeded.");
        return EXIT_FAILURE;
    }
    std::puts("done; restart the device");
    return EXIT_SUCCESS;
}

} // namespace

int main() {
    dax::StopSource stop;
    const CtrlC ctrlC(stop);
    try {
        return upgrade(stop);
    } catch (const dax::Failure& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return EXIT_FAILURE;
    }
}
