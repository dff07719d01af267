#include "daxctl/MonitorOptions.h"

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

#include "clients_common/CommandLine.h"
#include "daxctl/MethodOption.h"

namespace daxctl {

namespace {

namespace fs = std::filesystem;
using clients_common::WrongUsage;
using monitor::Side;

void checkMethods(const MonitorOptions& options) {
    const auto sides = options.sides();
    for (const std::string& method : options.methods) {
        const auto has = [&method](Side side) {
            return DAX::DAXIPC::DBUSLowLevel::findMethod(side, method) != nullptr;
        };
        if (!has(Side::SERVICE) && !has(Side::CORE)) {
            methodNamed(*sides.begin(), method);
        }
    }
}

// The file that a path leads to, also when it does not exist yet. "-" is the standard input.
fs::path target(const std::string& path) {
    std::error_code none;
    fs::path result = fs::absolute(path == "-" ? "/dev/stdin" : path, none);
    const int mostLinks = 40; // as the system has it
    for (int i = 0; i < mostLinks && !fs::exists(result, none) && fs::is_symlink(result, none); ++i) {
        result = result.parent_path() / fs::read_symlink(result, none);
    }
    const fs::path plain = fs::weakly_canonical(result, none);
    return plain.empty() ? result : plain;
}

bool isSameFile(const std::string& path, const std::string& other) {
    if (path.empty() || other.empty()) {
        return false;
    }
    std::error_code none; // one that does not exist yet
    return target(path) == target(other) || fs::equivalent(target(path), target(other), none);
}

bool isSamePipe(const std::string& path, int descriptor) {
    struct stat one {};
    struct stat other {};
    return ::stat(path.c_str(), &one) == 0 && ::fstat(descriptor, &other) == 0 && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino;
}

// Whether what is shown goes into the same file.
bool isOutput(const std::string& path) {
    std::error_code none;
    if (fs::is_fifo(path, none)) {
        return isSamePipe(path, STDOUT_FILENO) || isSamePipe(path, STDERR_FILENO);
    }
    return fs::is_regular_file(path, none) && (isSameFile(path, "/dev/stdout") || isSameFile(path, "/dev/stderr"));
}

void checkFiles(const MonitorOptions& options) {
    if (!options.readPath.empty() && !options.writePath.empty()) {
        throw WrongUsage("--write takes what a bus sends, not what --read brings.");
    }
    if (options.toScale && options.diagramPath.empty()) {
        throw WrongUsage("--time-scale is for --diagram.");
    }
    if (options.writePath == "-" || options.diagramPath == "-" || isOutput(options.writePath) ||
        isOutput(options.diagramPath)) {
        throw WrongUsage("The standard output has what is shown. Name a file.");
    }
    if (isSameFile(options.diagramPath, options.readPath) || isSameFile(options.diagramPath, options.writePath)) {
        throw WrongUsage("The picture would overwrite the capture. Name another file.");
    }
}

} // namespace

std::set<Side> MonitorOptions::sides() const {
    std::set<Side> chosen;
    if (service || !core) {
        chosen.insert(Side::SERVICE);
    }
    if (core || !service) {
        chosen.insert(Side::CORE);
    }
    return chosen;
}

void MonitorOptions::check() const {
    checkMethods(*this);
    checkFiles(*this);
}

} // namespace daxctl
