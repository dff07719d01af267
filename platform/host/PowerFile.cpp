#include "PowerFile.h"

#include "AppendFile.h"
#include "Root.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace KovanHost {

namespace {

template <typename Result>
Result checked(Result result, const std::string& path) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return result;
}

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() { close(m_number); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_number; }

private:
    int m_number;
};

// Empty when there is no file.
std::optional<std::string> readText(const std::string& path) {
    const int opened = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (opened < 0 && (errno == ENOENT || errno == ENOTDIR)) {
        return std::nullopt;
    }
    const Descriptor file(checked(opened, path));
    std::string text;
    char buffer[4096];
    while (const ssize_t count = checked(read(file, buffer, sizeof(buffer)), path)) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

void replaceText(const std::string& path, const std::string& text) {
    const std::string fresh = path + ".new";
    {
        const Descriptor file(checked(open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644), fresh));
        for (std::size_t written = 0; written < text.size();) {
            written +=
                static_cast<std::size_t>(checked(write(file, text.data() + written, text.size() - written), fresh));
        }
    }
    checked(std::rename(fresh.c_str(), path.c_str()), path);
}

void makeFolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path();
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) {
        throw std::system_error(failure, folder);
    }
}

// Held until the descriptor is closed, at the latest when the process dies.
int lockFile(const std::string& path) {
    const int file = checked(open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0644), path);
    while (flock(file, LOCK_EX) != 0 && errno == EINTR) {
    }
    return file;
}

Power load(const std::string& path) {
    const std::optional<std::string> text = readText(path);
    try {
        return text ? parsePower(*text) : Power();
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
}

// What a process remembers of the file.
struct Memory {
    std::string path;
    Power power;
    std::string complaint; // empty while the file is good

    void refresh() {
        try {
            power = load(path);
            complaint.clear();
        } catch (const std::runtime_error& error) {
            if (complaint != error.what()) {
                complaint = error.what();
                appendLine(STDERR_FILENO, complaint + "; keeping what was known");
            }
        }
    }
};

} // namespace

std::string powerPath() {
    return underRoot("run/kovan/power.ini");
}

Power loadPower() {
    return load(powerPath());
}

Power knownPower() {
    static std::mutex mutex;
    static Memory& memory = *std::make_unique<Memory>().release(); // outlives static destructors

    const std::lock_guard<std::mutex> lock(mutex);
    const std::string path = powerPath();
    if (memory.path != path) {
        memory = {path, {}, {}};
    }
    memory.refresh();
    return memory.power;
}

void changePower(const std::function<void(Power&)>& change) {
    const std::string path = powerPath();
    makeFolderOf(path);
    const Descriptor lock(lockFile(path + ".lock"));
    Power power = knownPower();
    change(power);
    replaceText(path, textOf(power));
    knownPower(); // remembers it
}

} // namespace KovanHost
