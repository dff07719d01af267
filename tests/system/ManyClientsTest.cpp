// Many connections at the same time.
#include <thread>

#include <gmock/gmock.h>

#include "system/support/Desk.h"

namespace DAX::Tests {
namespace {

const int CLIENTS = 200;
const int THREADS = 8;

TEST(ManyClients, AllAreAnsweredAndAllAreForgotten) {
    Desk desk;
    std::vector<std::unique_ptr<Service::IServiceManager>> clients;
    for (int client = 0; client < CLIENTS; ++client) {
        clients.push_back(desk.connect());
    }
    const auto serve = [&clients](int first) {
        for (int client = first; client < CLIENTS; client += THREADS) {
            const std::string name = "client" + std::to_string(client);
            const auto lock = clients[static_cast<std::size_t>(client)]->acquireExternalLock(
                name, DAXCommon::ServiceClientPriority(client % 8));
            clients[static_cast<std::size_t>(client)]->releaseExternalLock(name, lock);
        }
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back(serve, thread);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(desk.countMessages("Registering new connection named "), CLIENTS);
    EXPECT_EQ(desk.countMessages("is being released by client"), CLIENTS);
    clients.clear();
    EXPECT_TRUE(desk.waitForMessage("We are now entering idle state."));
    EXPECT_EQ(desk.countMessages("Unregistering connection named "), CLIENTS);
}

} // namespace
} // namespace DAX::Tests
