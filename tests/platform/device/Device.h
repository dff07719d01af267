#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/PrivateBus.h"
#include "support/Process.h"
#include "support/RawPeer.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {

// A device without its hardware: a bus with the simulated core, and programs of the build for a device in a file system
// that only they see, in which /etc, /run and /mnt are the folders of the same names in `root`. Their working
// directory, which KOVAN_ROOT names as well, is another folder: a device looks at neither.
class Device {
public:
    Device();

    // Why this machine gives nobody a file system of his own; empty when it does.
    static std::string problem();

    // Starts a program of the device; KOVAN_STUBS_WORKING is `working`.
    std::unique_ptr<Process> start(const std::vector<std::string>& line, const std::string& working) const;
    std::unique_ptr<Process> startDaemon(const std::string& working) const;

    // False when no daemon has its name on the bus within the usual bound.
    bool waitForDaemon() { return m_observer.waitForNameOwner(DAEMON_NAME, true); }

    // A client's whole upgrade, by daxctl.
    FinishedRun upgrade() const;

    // The functions of the stubs that were called, each once and in alphabetical order.
    std::vector<std::string> calledFunctions() const;

    // The files and folders that the working directory has now.
    std::vector<std::string> workingDirectory() const;

    const TemporaryRoot root;

private:
    static const char* const DAEMON_NAME;

    PrivateBus m_bus;
    RawPeer m_observer;
    Process m_core;
};

} // namespace DAX::Tests
