#include "daxctl/ChildProcess.h"

#include <csignal>
#include <cstdio>
#include <cstring>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace daxctl {

namespace {

const int COULD_NOT_START = 127;
const auto LOOK_INTERVAL = std::chrono::milliseconds(20);

// With no signals held back: the command is to be ended as every other program.
int spawn(const std::vector<std::string>& commandLine, pid_t& pid) {
    std::vector<char*> words;
    for (const auto& word : commandLine) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    const int result = posix_spawnp(&pid, words[0], nullptr, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    return result;
}

} // namespace

int runChild(const std::vector<std::string>& commandLine, Interruption& interruption) {
    pid_t pid = 0;
    if (const int error = spawn(commandLine, pid); error != 0) {
        std::fprintf(stderr, "%s: %s\n", commandLine[0].c_str(), std::strerror(error));
        return COULD_NOT_START;
    }
    bool told = false;
    for (;;) {
        int status = 0;
        if (waitpid(pid, &status, told ? 0 : WNOHANG) == pid) {
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        if (interruption.wait(LOOK_INTERVAL)) {
            kill(pid, SIGTERM);
            told = true;
        }
    }
}

} // namespace daxctl
