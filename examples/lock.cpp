// Runs a command during which nobody may upgrade the device: lock COMMAND
#include <cstdio>
#include <cstdlib>

#include <dax/client.h>

namespace {

int runUnderLock(const char* command) {
    dax::Client client("lock example");
    dax::Lock lock = client.lock(dax::Priority::MAIN_APPLICATION);
    const int status = std::system(command);
    if (!lock.release()) {
        std::fputs("The lock was lost meanwhile: the update service has ended.\n", stderr);
        return EXIT_FAILURE;
    }
    return status == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: lock COMMAND\n", stderr);
        return 2;
    }
    try {
        return runUnderLock(argv[1]);
    } catch (const dax::Error& error) {
        const bool isHeld = error.kind() == dax::Error::Kind::EXTERNAL_LOCK_DENIED;
        std::fprintf(stderr, "%s\n", isHeld ? "An upgrade is running." : error.what());
    } catch (const dax::Failure& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
    }
    return EXIT_FAILURE;
}
