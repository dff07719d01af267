#include "PowerRecords.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "KeyFile.h"

namespace KovanHost {

namespace {

using Records = std::vector<PowerRecord>;

std::int64_t microsecondsSince1970() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

template <class T>
bool parseWhole(const std::string& text, T& number) {
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end;
}

int readNumber(const KeyFile& file, const char* key) {
    const std::optional<int> number = file.get<int>("power", key);
    if (!number) {
        throw std::runtime_error("there is no " + std::string(key) + " in [power]");
    }
    if (*number < 0) {
        throw std::runtime_error("the " + std::string(key) + " is negative");
    }
    return *number;
}

PowerRecord parseRecord(const std::string& key, const std::string& text) {
    const std::size_t space = text.find(' ');
    PowerRecord record = {0, text.substr(0, space), 0};
    if (space == std::string::npos || !parseWhole(text.substr(space + 1), record.number) ||
        !parseWhole(key, record.sequence)) {
        throw std::runtime_error("'" + key + "=" + text + "' is no record");
    }
    return record;
}

Records readRecords(const KeyFile& file, const char* group) {
    Records records;
    for (const std::string& key : file.keys(group)) {
        records.push_back(parseRecord(key, file.get<std::string>(group, key).value_or("")));
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
    // The clock may have been set back since the last record.
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
    if (text.back() != '\n') { // a last number that was cut off could pass for a smaller one
        throw std::runtime_error("the last line has no end");
    }
    const KeyFile file(text);
    Power power;
    power.state = readNumber(file, "state");
    power.wakeUpReason = readNumber(file, "wakeup_reason");
    power.announcements = readRecords(file, "announcements");
    power.requests = readRecords(file, "requests");
    return power;
}

} // namespace KovanHost
