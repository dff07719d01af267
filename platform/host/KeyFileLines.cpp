#include "KeyFileLines.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "GLibOwner.h"

namespace KovanHost {

namespace {

constexpr std::string_view SPACES = " \t\n\f\r"; // GLib does not count a vertical tab as one

// Where the lines begin, and where the last one ends.
std::vector<std::size_t> bordersOf(const std::string& text) {
    std::vector<std::size_t> borders = {0};
    for (std::size_t end = 0; (end = text.find('\n', end)) != std::string::npos;) {
        borders.push_back(++end);
    }
    if (borders.back() != text.size()) {
        borders.push_back(text.size());
    }
    return borders;
}

std::string_view lineAt(const std::string& text, const std::vector<std::size_t>& borders, std::size_t index) {
    std::string_view line(text.data() + borders[index], borders[index + 1] - borders[index]);
    line.remove_prefix(std::min(line.find_first_not_of(SPACES), line.size()));
    return line;
}

bool beginsGroup(std::string_view line) {
    return !line.empty() && line.front() == '[';
}

std::string_view groupOf(std::string_view line) {
    return line.substr(1, line.find(']') - 1);
}

std::string_view keyOf(std::string_view line) {
    const std::string_view key = line.substr(0, line.find('='));
    return key.substr(0, key.find_last_not_of(SPACES) + 1);
}

// The first and the last group that a good text names, as the beginning of a text that continues it. For GLib it
// matters whether there was a group before, and whether it was the first one.
std::string groupsBehind(const std::string& text) {
    const std::vector<std::size_t> borders = bordersOf(text);
    std::string first;
    std::string last;
    for (std::size_t index = 0; index + 1 < borders.size(); ++index) {
        const std::string_view line = lineAt(text, borders, index);
        if (beginsGroup(line)) {
            last = "[" + std::string(groupOf(line)) + "]\n";
            first = first.empty() ? last : first;
        }
    }
    return first + last;
}

struct Place {
    std::size_t group = 0;       // the first line that names it
    std::size_t line = 0;        // the key's
    std::size_t lastOfGroup = 0; // of the group's keys, or the group itself
};

Place placeOf(const std::string& text, const std::string& group, const std::string& key) {
    const std::vector<std::size_t> borders = bordersOf(text);
    std::optional<std::string_view> current;
    Place place;
    for (std::size_t index = 0; index + 1 < borders.size(); ++index) {
        const std::string_view line = lineAt(text, borders, index);
        if (beginsGroup(line)) {
            current = groupOf(line);
            place.group = place.group == 0 && current == group ? index + 1 : place.group;
        } else if (line.empty() || line.front() == '#') {
            continue;
        } else if (current == group && keyOf(line) == key) {
            place.line = index + 1;
        }
        place.lastOfGroup = current == group ? index + 1 : place.lastOfGroup;
    }
    return place;
}

bool isGood(const std::string& text) {
    const GLibOwner<GKeyFile> file(g_key_file_new());
    return g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr) != FALSE;
}

} // namespace

std::size_t firstBadLine(const std::string& text) {
    const std::vector<std::size_t> borders = bordersOf(text);
    std::string before; // the groups to which the lines from `good` on belong
    std::size_t good = 0;
    std::size_t end = borders.size() - 1;
    while (end - good > 1) {
        const std::size_t middle = (good + end) / 2;
        const std::string half = before + text.substr(borders[good], borders[middle] - borders[good]);
        if (isGood(half)) {
            before = groupsBehind(half);
            good = middle;
        } else {
            end = middle;
        }
    }
    return good + 1;
}

std::size_t lineOfKey(const std::string& text, const std::string& group, const std::string& key) {
    return placeOf(text, group, key).line;
}

std::size_t lineOfGroup(const std::string& text, const std::string& group) {
    return placeOf(text, group, "").group;
}

std::string withLine(std::string text, const std::string& group, const std::string& groupLine, const std::string& key,
                     const std::string& keyLine) {
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
    const Place place = placeOf(text, group, key);
    const std::vector<std::size_t> borders = bordersOf(text);
    if (place.line != 0) {
        const std::size_t begin = borders[place.line - 1];
        return text.replace(begin, borders[place.line] - begin, keyLine);
    }
    if (place.lastOfGroup != 0) {
        return text.insert(borders[place.lastOfGroup], keyLine);
    }
    return text + (text.empty() ? "" : "\n") + groupLine + keyLine;
}

} // namespace KovanHost
