#include "DAXCoreSimulator/ScenarioFile.h"

#include <algorithm>

#include "DAXCoreSimulator/Scenario.h"

namespace DAXCoreSimulator {

namespace {

// Takes over a text that GLib has allocated; empty for null.
std::string take(char* text) {
    const std::unique_ptr<char, void (*)(void*)> owned(text, g_free);
    return text != nullptr ? text : "";
}

std::vector<std::string> takeAll(char** texts) {
    const std::unique_ptr<char*, void (*)(char**)> owned(texts, g_strfreev);
    std::vector<std::string> all;
    for (char** text = texts; text != nullptr && *text != nullptr; ++text) {
        all.emplace_back(*text);
    }
    return all;
}

class Error {
public:
    ~Error() { g_clear_error(&m_error); }
    GError** out() { return &m_error; }
    bool isSet() const { return m_error != nullptr; }
    std::string text() const { return m_error->message; }

private:
    GError* m_error = nullptr;
};

} // namespace

ScenarioFile::ScenarioFile() : m_file(g_key_file_new(), g_key_file_free) {}

ScenarioFile::ScenarioFile(std::string path) : ScenarioFile() {
    m_path = std::move(path);
    Error error;
    if (!g_key_file_load_from_file(m_file.get(), m_path.c_str(), G_KEY_FILE_NONE, error.out())) {
        throw ScenarioError(m_path + ": " + error.text());
    }
}

std::vector<std::string> ScenarioFile::groups() const {
    return takeAll(g_key_file_get_groups(m_file.get(), nullptr));
}

void ScenarioFile::fail(const std::string& where, const std::string& reason) const {
    throw ScenarioError(m_path + ": " + where + ": " + reason);
}

void ScenarioFile::Group::fail(const std::string& key, const std::string& reason) const {
    m_file.fail("[" + m_name + "] " + key, reason);
}

bool ScenarioFile::Group::has(const char* key) {
    m_known.insert(key);
    return g_key_file_has_key(m_file.m_file.get(), m_name.c_str(), key, nullptr);
}

void ScenarioFile::Group::read(const char* key, std::string& value) {
    if (has(key)) {
        Error error;
        value = take(g_key_file_get_string(m_file.m_file.get(), m_name.c_str(), key, error.out()));
        if (error.isSet()) {
            fail(key, error.text());
        }
    }
}

void ScenarioFile::Group::read(const char* key, bool& value) {
    if (has(key)) {
        Error error;
        value = g_key_file_get_boolean(m_file.m_file.get(), m_name.c_str(), key, error.out()) != 0;
        if (error.isSet()) {
            fail(key, error.text());
        }
    }
}

void ScenarioFile::Group::read(const char* key, int& value) {
    if (has(key)) {
        Error error;
        value = g_key_file_get_integer(m_file.m_file.get(), m_name.c_str(), key, error.out());
        if (error.isSet()) {
            fail(key, error.text());
        }
    }
}

void ScenarioFile::Group::read(const char* key, double& value) {
    if (has(key)) {
        Error error;
        value = g_key_file_get_double(m_file.m_file.get(), m_name.c_str(), key, error.out());
        if (error.isSet()) {
            fail(key, error.text());
        }
        if (!(value >= 0 && value <= 1e9)) {
            fail(key, "a number of seconds from 0 to 1000000000 is expected");
        }
    }
}

void ScenarioFile::Group::read(const char* key, std::vector<std::string>& values) {
    if (has(key)) {
        Error error;
        values = takeAll(g_key_file_get_string_list(m_file.m_file.get(), m_name.c_str(), key, nullptr, error.out()));
        if (error.isSet()) {
            fail(key, error.text());
        }
    }
}

void ScenarioFile::Group::refuseUnknownKeys() const {
    for (const std::string& key : takeAll(g_key_file_get_keys(m_file.m_file.get(), m_name.c_str(), nullptr, nullptr))) {
        if (m_known.count(key) == 0) {
            fail(key, "there is no such key");
        }
    }
}

} // namespace DAXCoreSimulator
