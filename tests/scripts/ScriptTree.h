#pragma once

#include <chrono>
#include <filesystem>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Process.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {

// The tree of these sources.
inline const std::filesystem::path SOURCE_TREE(SOURCE_FOLDER);

const std::chrono::seconds LONGEST_SCRIPT(60); // on a busy machine

using Arguments = std::vector<std::string>;
using Environment = std::map<std::string, std::optional<std::string>>;

inline Command commandOf(const std::filesystem::path& script, const Environment& environment = {},
                         const Arguments& arguments = {}) {
    Command command{{script.string()}, environment, {}, {}};
    command.line.insert(command.line.end(), arguments.begin(), arguments.end());
    return command;
}

// Runs a script of these sources on these sources.
inline FinishedRun runOnThisTree(const std::string& script) {
    return run(commandOf(SOURCE_TREE / "scripts" / script), LONGEST_SCRIPT);
}

// What a shell command prints, without the end of its first line; empty when it fails.
inline std::string printedBy(const std::string& command) {
    const FinishedRun finished = run({{"/bin/sh", "-c", command}, {}, {}, {}}, LONGEST_SCRIPT);
    return finished.output.substr(0, finished.output.find('\n'));
}

// Makes a folder for PATH with the interpreter alone. What stands in PATH for it may be a script that needs others.
inline std::filesystem::path folderWithInterpreter(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    std::filesystem::create_symlink(printedBy("python3 -c 'import sys; print(sys.executable)'"), folder / "python3");
    return folder;
}

// A tree of the test's own, with copies of scripts of ours and with what the test writes into it.
class ScriptTree : public testing::Test {
protected:
    explicit ScriptTree(std::initializer_list<const char*> scripts) {
        std::filesystem::create_directories(m_tree / "scripts");
        for (const std::filesystem::path script : scripts) {
            std::filesystem::copy_file(SOURCE_TREE / "scripts" / script, m_tree / "scripts" / script);
        }
    }

    void write(const std::string& file, const std::string& text) const { m_tree.write(file, text); }

    // Writes a file that can be run.
    void writeProgram(const std::string& file, const std::string& text) const {
        write(file, text);
        std::filesystem::permissions(m_tree / file, std::filesystem::perms::owner_all);
    }

    FinishedRun runScript(const std::string& name, const Environment& environment = {},
                          const Arguments& arguments = {}) const {
        return run(commandOf(m_tree / ("scripts/" + name), environment, arguments), LONGEST_SCRIPT);
    }

    const TemporaryRoot m_tree;
};

} // namespace DAX::Tests
