#include "KeyFile.h"

#include <algorithm>
#include <stdexcept>

#include "GLibOwner.h"
#include "KeyFileLines.h"

namespace KovanHost {

namespace {

// A text of any length and with any bytes, in a form that can be shown to a person.
std::string shown(const std::string& text) {
    constexpr std::size_t MOST = 160;
    const std::size_t half = std::min(text.size(), MOST) / 2;
    const std::string part =
        text.size() <= MOST ? text : text.substr(0, half) + " ... " + text.substr(text.size() - half);
    std::string result = GLibOwner<gchar>(g_utf8_make_valid(part.data(), static_cast<gssize>(part.size()))).get();
    std::replace_if(
        result.begin(), result.end(), [](char byte) { return g_ascii_iscntrl(byte) != FALSE; }, '?');
    return result;
}

std::runtime_error atLine(std::size_t line, const std::string& reason) {
    return std::runtime_error("line " + std::to_string(line) + ": " + reason);
}

bool isUtf8(const std::string& text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

bool isName(const std::string& text) {
    const auto isForbidden = [](char byte) {
        return g_ascii_iscntrl(byte) != FALSE || byte == '[' || byte == ']' || byte == '=';
    };
    return !text.empty() && text.front() != '#' && text.front() != ' ' && text.back() != ' ' && isUtf8(text) &&
           std::none_of(text.begin(), text.end(), isForbidden);
}

const std::string& name(const std::string& text) {
    if (!isName(text)) {
        throw std::runtime_error("'" + shown(text) + "' cannot be a name in a key file");
    }
    return text;
}

// The value that `get` reads; empty when there is none. Throws `wrong` for a value of another type.
template <class T, class Get, class Wrong>
std::optional<T> read(Get&& get, Wrong&& wrong) {
    GError* raised = nullptr;
    std::optional<T> value = get(&raised);
    if (raised == nullptr) {
        return value;
    }
    const GLibOwner<GError> error(raised);
    if (g_error_matches(raised, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_KEY_NOT_FOUND) == FALSE &&
        g_error_matches(raised, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_GROUP_NOT_FOUND) == FALSE) {
        throw wrong();
    }
    return std::nullopt;
}

std::optional<std::string> textOf(gchar* owned) {
    const GLibOwner<gchar> text(owned);
    return text ? std::optional<std::string>(text.get()) : std::nullopt;
}

std::vector<std::string> textsOf(gchar** owned) {
    const GLibOwner<gchar*> texts(owned);
    std::vector<std::string> result;
    for (gchar** text = owned; text != nullptr && *text != nullptr; ++text) {
        result.emplace_back(*text);
    }
    return result;
}

} // namespace

KeyFile::KeyFile() : m_file(g_key_file_new()) {}

KeyFile::KeyFile(const std::string& text) : m_file(g_key_file_new()), m_text(text) {
    const std::string good = text.substr(0, text.find('\0')); // GLib would end a line at a zero, without a word
    GError* raised = nullptr;
    if (g_key_file_load_from_data(m_file.get(), good.data(), good.size(), G_KEY_FILE_NONE, &raised) == FALSE) {
        const GLibOwner<GError> error(raised);
        throw atLine(firstBadLine(good), shown(error->message));
    }
    if (good.size() != text.size()) {
        const auto ends = std::count(good.begin(), good.end(), '\n');
        throw atLine(static_cast<std::size_t>(ends) + 1, "a byte that is zero");
    }
}

void KeyFile::Free::operator()(GKeyFile* file) const {
    g_key_file_free(file);
}

std::vector<std::string> KeyFile::groups() const {
    return textsOf(g_key_file_get_groups(m_file.get(), nullptr));
}

std::vector<std::string> KeyFile::keys(const std::string& group) const {
    return textsOf(g_key_file_get_keys(m_file.get(), group.c_str(), nullptr, nullptr));
}

template <>
std::optional<bool> KeyFile::get(const std::string& group, const std::string& key) const {
    return read<bool>(
        [&](GError** error) {
            return g_key_file_get_boolean(m_file.get(), group.c_str(), key.c_str(), error) != FALSE;
        },
        [&] { return wrongType(group, key, "no boolean (true or false)"); });
}

template <>
std::optional<int> KeyFile::get(const std::string& group, const std::string& key) const {
    return read<int>(
        [&](GError** error) { return g_key_file_get_integer(m_file.get(), group.c_str(), key.c_str(), error); },
        [&] { return wrongType(group, key, "no number of 32 bits"); });
}

template <>
std::optional<std::string> KeyFile::get(const std::string& group, const std::string& key) const {
    return read<std::string>(
        [&](GError** error) {
            return textOf(g_key_file_get_string(m_file.get(), group.c_str(), key.c_str(), error)).value_or("");
        },
        [&] { return wrongType(group, key, "no UTF-8 text with \\s, \\n, \\t, \\r and \\\\ for escapes"); });
}

std::optional<std::string> KeyFile::raw(const std::string& group, const std::string& key) const {
    return textOf(g_key_file_get_value(m_file.get(), group.c_str(), key.c_str(), nullptr));
}

void KeyFile::set(const std::string& group, const std::string& key, const std::string& value) {
    *this = KeyFile(withLine(m_text, group, groupLine(group), key, keyLine(key, value)));
}

std::runtime_error KeyFile::wrongGroup(const std::string& group, const char* reason) const {
    return atLine(lineOfGroup(m_text, group), "[" + shown(group) + "] is " + reason);
}

std::runtime_error KeyFile::wrongType(const std::string& group, const std::string& key, const char* type) const {
    return atLine(lineOfKey(m_text, group, key), "'" + shown(key) + "' in [" + shown(group) + "] is " + type + ": '" +
                                                     shown(raw(group, key).value_or("")) + "'");
}

std::string groupLine(const std::string& group) {
    return "[" + name(group) + "]\n";
}

std::string keyLine(const std::string& key, const std::string& value) {
    if (!isUtf8(value)) {
        throw std::runtime_error("'" + shown(value) + "' is no UTF-8 text");
    }
    if (!value.empty() && value.front() == '\f') {
        throw std::runtime_error("'" + shown(value) + "' begins with a form feed"); // GLib would leave it out
    }
    const GLibOwner<GKeyFile> file(g_key_file_new());
    g_key_file_set_string(file.get(), "group", "key", value.c_str());
    return name(key) + "=" + textOf(g_key_file_get_value(file.get(), "group", "key", nullptr)).value_or("") + "\n";
}

} // namespace KovanHost
