// A lock whose number cannot be written is released again: nobody else could do that.
#include <future>

#include <gmock/gmock.h>

#include "clients/clients_common/LostOutput.h"
#include "clients/daxctl/StandardError.h"
#include "daxctl/Commands.h"
#include "support/PlayedService.h"
#include "support/PrivateBus.h"

namespace DAX::Tests {
namespace {

using namespace testing;

class LockWhoseNumberIsLost : public TestWithParam<std::vector<const char*>> {};

TEST_P(LockWhoseNumberIsLost, IsReleased) {
    PrivateBus bus;
    PlayedService daemon;
    StandardError errors(StandardError::Kind::PIPE);
    int status = 0;
    {
        const LostOutput lost;
        clients_common::Program program("daxctl", "For tests.");
        program.requireCommand();
        daxctl::addLockCommands(program);
        const std::vector<const char*> line = GetParam();
        auto ended =
            std::async(std::launch::async, [&] { return program.run(static_cast<int>(line.size()), line.data()); });
        daemon.giveLock(5);
        daemon.answer(*daemon.next("releaseExternalLock"), "");
        status = ended.get();
    }
    EXPECT_EQ(status, 1);
    EXPECT_EQ(errors.text(), "daxctl: The standard output cannot be written: No space left on device\n");
}

INSTANTIATE_TEST_SUITE_P(InAnyForm, LockWhoseNumberIsLost,
                         Values(std::vector<const char*>{"daxctl", "lock", "acquire"},
                                std::vector<const char*>{"daxctl", "lock", "acquire", "--json"}));

} // namespace
} // namespace DAX::Tests
