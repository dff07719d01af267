// A service that looks for an upgrade, and asks again when others have the update service or a lock holds it back:
// patient_service [SECONDS BETWEEN TWO ATTEMPTS [ATTEMPTS]]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>

#include <dax/client.h>

namespace {

// What happened is for the log: who has the service, and why it makes sense to ask again.
std::string reasonOf(const dax::Refusal& refusal) {
    if (refusal.reason() == dax::Refusal::Reason::LOCKED) {
        return "a lock is in force";
    }
    return refusal.owner() ? refusal.owner()->clientName + " holds the service" : "the session was taken away";
}

// Empty when it is worth another attempt.
std::optional<int> look(dax::Client& client) {
    try {
        dax::Session session = client.request(dax::Priority(1));
        const dax::Found found = session.start(dax::UpgradeType::OTN).search();
        std::puts(found.upgrade ? "There is an upgrade." : "There is no upgrade.");
        return EXIT_SUCCESS;
    } catch (const dax::Refusal& refusal) {
        std::printf("Refused: %s.\n", reasonOf(refusal).c_str());
        return std::nullopt;
    } catch (const dax::Error& error) {
        std::printf("%s\n", error.what());
        // A session that was taken away before its transaction began ends in an error of no kind of its own.
        const bool mayBeTakenAway =
            error.kind() == dax::Error::Kind::TRANSACTION_INVALIDATED || error.kind() == dax::Error::Kind::UNKNOWN;
        return mayBeTakenAway ? std::nullopt : std::optional<int>(EXIT_FAILURE);
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::chrono::seconds pause(argc > 1 ? std::atoi(argv[1]) : 60);
    const int attempts = argc > 2 ? std::atoi(argv[2]) : 100;
    try {
        dax::Client client("patient example");
        for (int i = 0; i < attempts; ++i) {
            if (const std::optional<int> status = look(client)) {
                return *status;
            }
            std::this_thread::sleep_for(pause);
        }
    } catch (const dax::Unreachable& unreachable) {
        std::fprintf(stderr, "%s\n", unreachable.what());
    }
    return EXIT_FAILURE;
}
