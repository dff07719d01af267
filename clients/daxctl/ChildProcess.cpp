#include "daxctl/ChildProcess.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace daxctl {

namespace {

using Clock = std::chrono::steady_clock;

const int COULD_NOT_START = 127;
const auto LOOK_INTERVAL = std::chrono::milliseconds(20);

// Unblocks all signals and restores SIGPIPE, which the bus library ignores: the command must end like every other
// program.
class SpawnAttributes {
public:
    SpawnAttributes() {
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_attributes, &signals);
        sigaddset(&signals, SIGPIPE);
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { posix_spawnattr_destroy(&m_attributes); }

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes;
};

class SpawnFiles {
public:
    explicit SpawnFiles(ChildOutput output) {
        posix_spawn_file_actions_init(&m_actions);
        if (output == ChildOutput::TO_ERRORS) {
            posix_spawn_file_actions_adddup2(&m_actions, STDERR_FILENO, STDOUT_FILENO);
        }
    }
    SpawnFiles(const SpawnFiles&) = delete;
    SpawnFiles& operator=(const SpawnFiles&) = delete;
    ~SpawnFiles() { posix_spawn_file_actions_destroy(&m_actions); }

    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions;
};

int spawn(const std::vector<std::string>& commandLine, ChildOutput output, pid_t& pid) {
    std::vector<char*> words;
    words.reserve(commandLine.size() + 1);
    for (const auto& word : commandLine) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    return posix_spawnp(&pid, words[0], SpawnFiles(output).get(), SpawnAttributes().get(), words.data(), environ);
}

} // namespace

ChildEnd runChild(const std::vector<std::string>& commandLine, ChildOutput output, Interruption& interruption,
                  const std::function<void()>& meanwhile) {
    pid_t pid = 0;
    if (const int error = spawn(commandLine, output, pid); error != 0) {
        std::fprintf(stderr, "%s: %s\n", commandLine[0].c_str(), std::strerror(error));
        return {COULD_NOT_START, false};
    }
    std::map<int, Clock::time_point> firstOfEach;
    for (;;) {
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid) {
            return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)};
        }
        if (const int signal = interruption.next(LOOK_INTERVAL); signal != 0) {
            const auto now = Clock::now();
            const bool isRepeated = now - firstOfEach.emplace(signal, now).first->second > ONE_INTERRUPTION;
            kill(pid, isRepeated ? SIGKILL : SIGTERM);
        }
        meanwhile();
    }
}

} // namespace daxctl
