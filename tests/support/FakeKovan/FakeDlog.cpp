#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include <dlog.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {
namespace {

// Takes the text up to `delimiter` off `rest`. Leaves `rest` as it is when there is no delimiter.
std::string take(std::string& rest, const std::string& opening, const std::string& delimiter) {
    const size_t end = rest.find(delimiter, opening.size());
    if (rest.compare(0, opening.size(), opening) != 0 || end == std::string::npos) {
        return "";
    }
    const std::string taken = rest.substr(opening.size(), end - opening.size());
    rest.erase(0, end + delimiter.size());
    return taken;
}

bool isDecimal(const std::string& text) {
    return !text.empty() && text.size() < 10 && text.find_first_not_of("0123456789") == std::string::npos;
}

void parseSource(LogLine& line) {
    std::string rest = line.message;
    const std::string file = take(rest, "", ":");
    const std::string number = take(rest, "", ">");
    if (!file.empty() && isDecimal(number)) {
        line.file = file;
        line.line = std::stoi(number);
        line.message = rest;
    }
}

LogLine parse(int logId, int priority, const char* tag, const std::string& text) {
    LogLine line = {logId, priority, tag, text, "", "", 0, "", "", 0, ""};
    std::string rest = text;
    line.process = take(rest, "[", "]");
    line.thread = take(rest, "[", "]");
    const std::string number = take(rest, "[", "]");
    line.number = isDecimal(number) ? static_cast<unsigned int>(std::stoul(number)) : 0;
    line.level = take(rest, "[", "] ");
    line.message = rest;
    parseSource(line);
    return line;
}

template <class Predicate>
int countOf(const std::string& level, Predicate predicate) {
    const std::vector<std::string> candidates = messages(level);
    return static_cast<int>(std::count_if(candidates.begin(), candidates.end(), predicate));
}

std::function<void()> takeFunctionAfter(const std::string& message) {
    return locked([&message](State::Content& content) -> std::function<void()> {
        const auto taken = content.functionsAfterMessages.extract(message);
        return taken.empty() ? nullptr : taken.mapped();
    });
}

void record(const LogLine& line) {
    locked([&line](State::Content& content) {
        content.logLines.push_back(line);
        content.journal.push_back("log " + line.level + " " + line.message);
        if (content.echoLog) {
            std::cerr << line.text << std::endl;
        }
    });
    State::get().logged.notify_all();
    if (const auto function = takeFunctionAfter(line.message)) {
        function();
    }
}

} // namespace

std::vector<LogLine> logLines() {
    return locked([](State::Content& content) { return content.logLines; });
}

std::vector<std::string> messages() {
    std::vector<std::string> found;
    for (const LogLine& line : logLines()) {
        found.push_back(line.message);
    }
    return found;
}

std::vector<std::string> messages(const std::string& level) {
    std::vector<std::string> found;
    for (const LogLine& line : logLines()) {
        if (line.level == level) {
            found.push_back(line.message);
        }
    }
    return found;
}

int count(const std::string& level, const std::string& message) {
    return countOf(level, [&message](const std::string& candidate) { return candidate == message; });
}

int countContaining(const std::string& level, const std::string& part) {
    return countOf(level, [&part](const std::string& candidate) { return candidate.find(part) != std::string::npos; });
}

bool waitForMessage(const std::string& level, const std::string& part, std::chrono::milliseconds bound) {
    State& state = State::get();
    std::unique_lock<std::mutex> lock(state.mutex);
    return state.logged.wait_for(lock, bound, [&] {
        const std::vector<LogLine>& lines = state.content.logLines;
        return std::any_of(lines.begin(), lines.end(), [&](const LogLine& line) {
            return line.level == level && line.message.find(part) != std::string::npos;
        });
    });
}

void afterMessage(const std::string& message, std::function<void()> function) {
    locked([&](State::Content& content) { content.functionsAfterMessages[message] = std::move(function); });
}

void echoLogToStderr(bool on) {
    locked([on](State::Content& content) { content.echoLog = on; });
}

} // namespace FakeKovan

int __dlog_print(int logId, int priority, const char* tag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char* text = nullptr;
    const int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return -1;
    }
    FakeKovan::record(FakeKovan::parse(logId, priority, tag, text));
    std::free(text);
    return length;
}
