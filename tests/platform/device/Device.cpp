#include "Device.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>
#include <stdexcept>

#include <unistd.h>

namespace DAX::Tests {

const char* const Device::DAEMON_NAME = "org.kovan.tv.dax.service.servicemanager";

namespace {

const char* const CALLS = "run/calls";
const char* const ELSEWHERE = "elsewhere";

// Makes a file system in the folder "image" of the root ($0), where nobody but what it starts sees it: with the
// machine's programs, what is installed for a device ($1), what else was built for it ($2), and the root's own folders.
// Then runs the program in the folder $3.
const char ENTER[] = "image=$0/image temporary=${0%/*} tree=$1 build=$2 work=$3\n"
                     "shift 3\n"
                     "mkdir -p \"$image\"\n"
                     "mount -t tmpfs tmpfs \"$image\"\n"
                     "for folder in /usr /proc \"$temporary\"; do\n"
                     "    mkdir -p \"$image$folder\"\n"
                     "    mount --bind \"$folder\" \"$image$folder\"\n"
                     "done\n"
                     "for link in bin lib lib32 lib64 sbin; do\n"
                     "    [ ! -h \"/$link\" ] || cp -P \"/$link\" \"$image/\"\n"
                     "done\n"
                     "for folder in etc run mnt; do\n"
                     "    mkdir -p \"$0/$folder\" \"$image/$folder\"\n"
                     "    mount --bind \"$0/$folder\" \"$image/$folder\"\n"
                     "done\n"
                     "mkdir \"$image/device\" \"$image/build\" \"$image/dev\"\n"
                     "mount --bind \"$tree\" \"$image/device\"\n"
                     "mount --bind \"$build\" \"$image/build\"\n"
                     "touch \"$image/dev/null\"\n"
                     "mount --bind /dev/null \"$image/dev/null\"\n"
                     "exec chroot \"$image\" env --chdir=\"$work\" LD_LIBRARY_PATH=/device/usr/lib \"$@\"\n";

std::vector<std::string> inOwnFileSystem(const std::vector<std::string>& line) {
    std::vector<std::string> whole = {"unshare", "--mount", "--propagation", "private", "sh", "-euc"};
    whole.insert(whole.end(), line.begin(), line.end());
    return whole;
}

} // namespace

std::string Device::problem() {
    if (geteuid() != 0) {
        return "needs root, to give the daemon a file system of its own";
    }
    const FinishedRun tried = run({inOwnFileSystem({"mount -t tmpfs tmpfs /mnt"}), {}, {}, {}});
    return tried.end == ProcessEnd::exited(0) ? "" : "cannot give the daemon a file system of its own: " + tried.errors;
}

Device::Device() : m_core({{std::string(PROGRAMS) + "/DAXCoreSimulator"}, {{"KOVAN_DLOG", "none"}}, {}, {}}) {
    root.write("etc/kovan/core-scenario.ini",
               "[search]\nseconds=0.01\n[installation]\nseconds=0.01\n[finalization]\nseconds=0.01\n");
    std::filesystem::create_directories(root / "mnt/systemrw/org.kovan.tv.dax/data/tv"); // every device has it
    std::filesystem::create_directories(root / ELSEWHERE);
    if (!m_observer.waitForNameOwner("org.kovan.tv.dax.core.TV", true)) {
        throw std::runtime_error("The simulated core did not start: " + m_core.errors());
    }
}

std::unique_ptr<Process> Device::start(const std::vector<std::string>& line, const std::string& working) const {
    Command command;
    command.line =
        inOwnFileSystem({ENTER, root.path().string(), DEVICE_ROOT, DEVICE_BUILD, (root / ELSEWHERE).string()});
    command.line.insert(command.line.end(), line.begin(), line.end());
    command.environment = {{"KOVAN_ROOT", (root / ELSEWHERE).string()},
                           {"KOVAN_STUBS_CALLS", "/" + std::string(CALLS)},
                           {"KOVAN_STUBS_WORKING", working}};
    return std::make_unique<Process>(command);
}

std::unique_ptr<Process> Device::startDaemon(const std::string& working) const {
    return start({"/device/usr/bin/DAXService"}, working);
}

FinishedRun Device::upgrade() const {
    return run({{std::string(PROGRAMS) + "/daxctl", "upgrade"}, {{"KOVAN_DLOG", "none"}}, {}, {}},
               std::chrono::seconds(60));
}

std::vector<std::string> Device::calledFunctions() const {
    std::set<std::string> functions;
    std::istringstream calls(root.read(CALLS));
    for (std::string line; std::getline(calls, line) && !calls.eof();) {
        functions.insert(line);
    }
    return {functions.begin(), functions.end()};
}

std::vector<std::string> Device::workingDirectory() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / ELSEWHERE)) {
        names.push_back(entry.path().lexically_relative(root / ELSEWHERE).string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace DAX::Tests
