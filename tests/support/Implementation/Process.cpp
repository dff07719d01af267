#include "support/Process.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace DAX::Tests {

namespace {

int checked(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

class Descriptor {
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() {
        if (m_number >= 0) {
            close(m_number);
        }
    }
    int get() const { return m_number; }

private:
    int m_number;
};

struct Pipe {
    Pipe() {
        int ends[2];
        checked(pipe2(ends, O_CLOEXEC), "pipe2");
        readEnd = Descriptor(ends[0]);
        writeEnd = Descriptor(ends[1]);
        checked(fcntl(ends[0], F_SETFL, O_NONBLOCK), "fcntl");
    }
    Descriptor readEnd;
    Descriptor writeEnd;
};

Descriptor inputHolding(const std::string& text) {
    Descriptor file(checked(memfd_create("input", MFD_CLOEXEC), "memfd_create"));
    checked(static_cast<int>(pwrite(file.get(), text.data(), text.size(), 0)), "pwrite");
    return file;
}

std::vector<std::string> environmentOf(const Command& command) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (command.environment.count(text.substr(0, text.find('='))) == 0) {
            result.push_back(text);
        }
    }
    for (const auto& [name, value] : command.environment) {
        if (value) {
            result.push_back(name + "=" + *value);
        }
    }
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

// All that the child needs. It is made before the fork, since only plain system calls are allowed between fork and
// exec.
struct Start {
    std::vector<std::string> line;
    std::vector<std::string> environment;
    const std::vector<int>& ignoredSignals;
    int input;
    int output;
    int errors;
    pid_t parent;
    std::vector<char*> linePointers;
    std::vector<char*> environmentPointers;
};

[[noreturn]] void becomeProgram(const Start& start) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != start.parent) {
        _exit(127);
    }
    dup2(start.input, STDIN_FILENO);
    dup2(start.output, STDOUT_FILENO);
    dup2(start.errors, STDERR_FILENO);
    for (const int signal : start.ignoredSignals) {
        std::signal(signal, SIG_IGN);
    }
    execvpe(start.linePointers[0], start.linePointers.data(), start.environmentPointers.data());
    const char* const reason = strerrordesc_np(errno);
    static_cast<void>(!write(STDERR_FILENO, reason, std::strlen(reason)));
    _exit(127);
}

pid_t startProgram(const Command& command, const Descriptor& input, const Descriptor& output,
                   const Descriptor& errors) {
    Start start{command.line,
                environmentOf(command),
                command.ignoredSignals,
                input.get(),
                output.get(),
                errors.get(),
                getpid(),
                {},
                {}};
    start.linePointers = pointersTo(start.line);
    start.environmentPointers = pointersTo(start.environment);
    const pid_t pid = checked(fork(), "fork");
    if (pid == 0) {
        becomeProgram(start);
    }
    return pid;
}

std::string readAvailable(const Descriptor& descriptor, bool& atEnd) {
    std::string text;
    char buffer[4096];
    ssize_t count;
    while ((count = read(descriptor.get(), buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    atEnd = count == 0;
    return text;
}

ProcessEnd reap(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? ProcessEnd::killedBy(WTERMSIG(status)) : ProcessEnd::exited(WEXITSTATUS(status));
}

} // namespace

struct Process::Pipes {
    Descriptor output;
    Descriptor errors;
    Descriptor process;
};

bool operator==(const ProcessEnd& left, const ProcessEnd& right) {
    return left.code == right.code && left.signal == right.signal;
}

std::ostream& operator<<(std::ostream& stream, const ProcessEnd& end) {
    return end.code ? stream << "exited with " << *end.code : stream << "killed by signal " << *end.signal;
}

Process::Process(const Command& command) {
    const Descriptor input = inputHolding(command.input);
    Pipe output;
    Pipe errors;
    m_pid = startProgram(command, input, output.writeEnd, errors.writeEnd);
    Pipes pipes{std::move(output.readEnd), std::move(errors.readEnd),
                Descriptor(checked(static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0)), "pidfd_open"))};
    m_collector = std::thread([this, ends = std::move(pipes)]() mutable { collect(std::move(ends)); });
}

Process::~Process() {
    send(SIGKILL);
    m_collector.join();
}

void Process::collect(Pipes pipes) {
    pollfd watched[] = {
        {pipes.process.get(), POLLIN, 0}, {pipes.output.get(), POLLIN, 0}, {pipes.errors.get(), POLLIN, 0}};
    for (bool ended = false; !ended;) {
        poll(watched, 3, -1);
        // Looks at the process before its pipes, so that its last output is still read after its end.
        ended = (watched[0].revents & POLLIN) != 0;
        bool atEnd[2] = {};
        const std::string output = readAvailable(pipes.output, atEnd[0]);
        const std::string errors = readAvailable(pipes.errors, atEnd[1]);
        watched[1].fd = atEnd[0] ? -1 : watched[1].fd;
        watched[2].fd = atEnd[1] ? -1 : watched[2].fd;

        const std::lock_guard<std::mutex> lock(m_mutex);
        m_output += output;
        m_errors += errors;
        if (ended) {
            m_end = reap(m_pid);
        }
        m_changed.notify_all();
    }
}

void Process::send(int signal) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_end) {
        kill(m_pid, signal);
    }
}

std::optional<ProcessEnd> Process::waitForEnd(std::chrono::milliseconds bound) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, bound, [this] { return m_end.has_value(); });
    return m_end;
}

bool Process::waitForOutput(const std::string& text, std::chrono::milliseconds bound) {
    return waitForText(m_output, text, bound);
}

bool Process::waitForErrors(const std::string& text, std::chrono::milliseconds bound) {
    return waitForText(m_errors, text, bound);
}

bool Process::waitForText(const std::string& where, const std::string& text, std::chrono::milliseconds bound) {
    std::size_t lookedAt = 0; // a flood of output comes in many pieces
    bool isThere = false;
    const auto look = [&] {
        isThere = where.find(text, lookedAt) != std::string::npos;
        lookedAt = where.size() - std::min(where.size(), text.size());
        return isThere;
    };
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, bound, [&] { return look() || m_end; });
    return isThere;
}

std::string Process::output() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_output;
}

std::string Process::errors() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_errors;
}

FinishedRun run(const Command& command, std::chrono::milliseconds bound) {
    Process process(command);
    std::optional<ProcessEnd> end = process.waitForEnd(bound);
    if (!end) {
        process.send(SIGKILL);
        end = process.waitForEnd();
    }
    return {end.value(), process.output(), process.errors()};
}

} // namespace DAX::Tests
