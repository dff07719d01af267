#include "support/Terminal.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>
#include <vector>

#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace DAX::Tests {

namespace {

const std::chrono::milliseconds LOOK_INTERVAL(10);

using Clock = std::chrono::steady_clock;

// Only plain calls until the program takes over, but for setenv: the tests that start terminals have one thread.
[[noreturn]] void becomeProgram(const Command& command, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(127);
    }
    for (const int number : {SIGINT, SIGQUIT, SIGHUP}) { // as after a log-in
        std::signal(number, SIG_DFL);
    }
    for (const auto& [name, value] : command.environment) {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }
    std::vector<char*> line;
    for (const std::string& word : command.line) {
        line.push_back(const_cast<char*>(word.c_str()));
    }
    line.push_back(nullptr);
    execvp(line.front(), line.data());
    _exit(127);
}

} // namespace

Terminal::Terminal(const Command& command) {
    winsize size{};
    size.ws_row = 50;
    size.ws_col = 200;
    const pid_t parent = getpid();
    m_pid = forkpty(&m_end, nullptr, nullptr, &size);
    if (m_pid < 0) {
        throw std::system_error(errno, std::generic_category(), "forkpty");
    }
    if (m_pid == 0) {
        becomeProgram(command, parent);
    }
}

Terminal::~Terminal() {
    hangUp();
    if (!m_ended) {
        kill(m_pid, SIGKILL);
        waitForEnd();
    }
}

void Terminal::type(const std::string& keys) {
    if (write(m_end, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
        throw std::system_error(errno, std::generic_category(), "write");
    }
}

void Terminal::readFor(std::chrono::milliseconds time) {
    pollfd watched{m_end, POLLIN, 0};
    if (poll(&watched, 1, static_cast<int>(time.count())) <= 0) {
        return;
    }
    char part[4096];
    const ssize_t count = read(m_end, part, sizeof part);
    if (count > 0) {
        m_text.append(part, static_cast<std::size_t>(count));
    } else {
        poll(nullptr, 0, static_cast<int>(time.count())); // everybody at the terminal has left it
    }
}

bool Terminal::waitFor(const std::string& text, std::chrono::milliseconds bound) {
    for (const auto deadline = Clock::now() + bound; Clock::now() < deadline; readFor(LOOK_INTERVAL)) {
        const auto at = m_text.find(text, m_waitedFor);
        if (at != std::string::npos) {
            m_waitedFor = at + text.size();
            return true;
        }
    }
    return false;
}

void Terminal::hangUp() {
    if (m_end >= 0) {
        close(std::exchange(m_end, -1));
    }
}

std::optional<ProcessEnd> Terminal::waitForEnd(std::chrono::milliseconds bound) {
    for (const auto deadline = Clock::now() + bound; !m_ended && Clock::now() < deadline; readFor(LOOK_INTERVAL)) {
        int status = 0;
        if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
            m_ended =
                WIFSIGNALED(status) ? ProcessEnd::killedBy(WTERMSIG(status)) : ProcessEnd::exited(WEXITSTATUS(status));
        }
    }
    return m_ended;
}

} // namespace DAX::Tests
