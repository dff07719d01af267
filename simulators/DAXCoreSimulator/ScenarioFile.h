#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <glib.h>

namespace DAXCoreSimulator {

// The groups and keys of a scenario file. Every failure throws ScenarioError, which names file, group and key.
class ScenarioFile {
public:
    ScenarioFile(); // without any group
    explicit ScenarioFile(std::string path);

    std::vector<std::string> groups() const;

    // One group that is being read. Every key that is asked for becomes a known one.
    class Group {
    public:
        Group(const ScenarioFile& file, std::string name) : m_file(file), m_name(std::move(name)) {}

        // Each leaves `value` as it is when the key is missing.
        void read(const char* key, std::string& value);
        void read(const char* key, bool& value);
        void read(const char* key, int& value);
        void read(const char* key, double& value); // not negative

        // A list separated by ";".
        void read(const char* key, std::vector<std::string>& values);

        bool has(const char* key);

        // The keys that somebody has asked for.
        const std::set<std::string>& known() const { return m_known; }

        // Throws for a key in the group that nobody has asked for.
        void refuseUnknownKeys() const;

        [[noreturn]] void fail(const std::string& key, const std::string& reason) const;

    private:
        const ScenarioFile& m_file;
        std::string m_name;
        std::set<std::string> m_known;
    };

    [[noreturn]] void fail(const std::string& where, const std::string& reason) const;

private:
    std::string m_path;
    std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> m_file;
};

} // namespace DAXCoreSimulator
