#include "PowerRecords.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <glib.h>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace KovanHost {

namespace {

using Records = std::vector<PowerRecord>;

struct Free {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
    void operator()(gchar* text) const { g_free(text); }
    void operator()(gchar** texts) const { g_strfreev(texts); }
};

std::int64_t microsecondsSince1970() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

// Calls a function of GLib that tells of its failure in a GError.
template <typename Function>
auto orThrow(Function&& function) {
    GError* error = nullptr;
    auto result = function(&error);
    if (error != nullptr) {
        const std::string reason = error->message;
        g_error_free(error);
        throw std::runtime_error(reason);
    }
    return result;
}

template <typename T>
bool parseWhole(const std::string& text, T& number) {
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end;
}

int readNumber(GKeyFile* file, const char* key) {
    const int number = orThrow([&](GError** error) { return g_key_file_get_integer(file, "power", key, error); });
    if (number < 0) {
        throw std::runtime_error("the " + std::string(key) + " is negative");
    }
    return number;
}

PowerRecord readRecord(GKeyFile* file, const char* group, const char* key) {
    const std::unique_ptr<gchar, Free> value(
        orThrow([&](GError** error) { return g_key_file_get_string(file, group, key, error); }));
    const std::string text = value.get();
    const std::size_t space = text.find(' ');
    PowerRecord record = {0, text.substr(0, space), 0};
    if (space == std::string::npos || !parseWhole(text.substr(space + 1), record.number) ||
        !parseWhole(key, record.sequence)) {
        throw std::runtime_error("'" + std::string(key) + "=" + text + "' is no record");
    }
    return record;
}

Records readRecords(GKeyFile* file, const char* group) {
    Records records;
    const std::unique_ptr<gchar*, Free> keys(g_key_file_get_keys(file, group, nullptr, nullptr));
    for (gchar** key = keys.get(); key != nullptr && *key != nullptr; ++key) {
        records.push_back(readRecord(file, group, *key));
    }
    std::sort(records.begin(), records.end(),
              [](const PowerRecord& left, const PowerRecord& right) { return left.sequence < right.sequence; });
    return records;
}

void writeRecords(std::ostream& text, const char* group, const Records& records) {
    text << '[' << group << "]\n";
    for (const PowerRecord& record : records) {
        text << record.sequence << '=' << record.name << ' ' << record.number << '\n';
    }
    text << '\n';
}

} // namespace

void addRecord(Records& records, const std::string& name, int number) {
    records.push_back({std::max(lastSequence(records) + 1, microsecondsSince1970()), name, number});
    if (records.size() > MOST_RECORDS) {
        records.erase(records.begin());
    }
}

std::int64_t lastSequence(const Records& records) {
    return records.empty() ? 0 : records.back().sequence;
}

std::string textOf(const Power& power) {
    std::ostringstream text;
    writeRecords(text, "announcements", power.announcements);
    writeRecords(text, "requests", power.requests);
    text << "[power]\nstate=" << power.state << "\nwakeup_reason=" << power.wakeUpReason << '\n';
    return text.str();
}

Power parsePower(const std::string& text) {
    if (text.empty()) {
        throw std::runtime_error("the file is empty");
    }
    if (text.back() != '\n') {
        throw std::runtime_error("the last line has no end");
    }
    const std::unique_ptr<GKeyFile, Free> file(g_key_file_new());
    orThrow([&](GError** error) {
        return g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, error);
    });
    Power power;
    power.state = readNumber(file.get(), "state");
    power.wakeUpReason = readNumber(file.get(), "wakeup_reason");
    power.announcements = readRecords(file.get(), "announcements");
    power.requests = readRecords(file.get(), "requests");
    return power;
}

} // namespace KovanHost
