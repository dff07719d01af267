#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>

namespace DAX::Tests {

// How a process ended: by itself with a code, or by a signal; exactly one of the two is set.
struct ProcessEnd {
    std::optional<int> code;
    std::optional<int> signal;

    static ProcessEnd exited(int code) { return {code, std::nullopt}; }
    static ProcessEnd killedBy(int signal) { return {std::nullopt, signal}; }
};

bool operator==(const ProcessEnd& left, const ProcessEnd& right);
std::ostream& operator<<(std::ostream& stream, const ProcessEnd& end);

// What to start. The environment is added to the caller's own; an empty optional removes a variable.
struct Command {
    std::vector<std::string> line; // the program first; one without "/" is looked for in PATH
    std::map<std::string, std::optional<std::string>> environment;
    std::string input;               // what it finds on its standard input
    std::vector<int> ignoredSignals; // signals that are ignored when it starts
};

// A running program. Its standard output and error are collected all the time, so that it never blocks on them. It does
// not outlive the object, whose destructor kills it, nor the thread that started it, since the kernel kills it with
// that. Waits end as soon as their condition holds, and after their bound at the latest. A program that cannot be
// started ends with code 127 and the reason on its standard error. Any thread may call.
class Process {
public:
    static constexpr std::chrono::seconds DEFAULT_BOUND{20};

    explicit Process(const Command& command);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return m_pid; }

    // Does nothing once the process has ended.
    void send(int signal);

    // Waits for its end. Empty when it still runs after the bound. All its output has been collected when this returns
    // an end.
    std::optional<ProcessEnd> waitForEnd(std::chrono::milliseconds bound = DEFAULT_BOUND);

    // Waits until the output, or the error output, holds the text. False when the process has ended without it, or
    // after the bound.
    bool waitForOutput(const std::string& text, std::chrono::milliseconds bound = DEFAULT_BOUND);
    bool waitForErrors(const std::string& text, std::chrono::milliseconds bound = DEFAULT_BOUND);

    // What it has written so far.
    std::string output() const;
    std::string errors() const;

private:
    struct Pipes;

    void collect(Pipes pipes);
    bool waitForText(const std::string& where, const std::string& text, std::chrono::milliseconds bound);

    pid_t m_pid = -1;
    std::thread m_collector;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    // Guarded by m_mutex.
    std::string m_output;
    std::string m_errors;
    std::optional<ProcessEnd> m_end;
};

// A program's whole run.
struct FinishedRun {
    ProcessEnd end;
    std::string output;
    std::string errors;
};

// Starts the program, waits for its end and returns the result. A program that still runs after the bound is killed.
FinishedRun run(const Command& command, std::chrono::milliseconds bound = Process::DEFAULT_BOUND);

} // namespace DAX::Tests
