#include <cstring>
#include <sstream>

#include <vconf.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {
namespace {

std::string describe(const Write& write) {
    std::ostringstream text;
    text << "write " << write.key << "=" << std::boolalpha;
    std::visit([&text](const auto& value) { text << value; }, write.value);
    return text.str();
}

int scripted(const std::map<std::string, int>& results, const std::string& key) {
    const auto found = results.find(key);
    return found != results.end() ? found->second : 0;
}

template <class T, class Out>
int read(const char* key, Out store) {
    return locked([&](State::Content& content) {
        content.reads.push_back(key);
        if (const int failure = scripted(content.readFailures, key)) {
            return failure;
        }
        const auto found = content.settings.find(key);
        if (found == content.settings.end()) {
            return MISSING_KEY;
        }
        const T* const value = std::get_if<T>(&found->second);
        if (value == nullptr) {
            return WRONG_TYPE;
        }
        store(*value);
        return 0;
    });
}

int resultOfWrite(const State::Content& content, const std::string& key) {
    return key.empty() ? EMPTY_KEY : scripted(content.writeFailures, key);
}

int write(const Write& write) {
    return locked([&write](State::Content& content) {
        const int result = resultOfWrite(content, write.key);
        if (result != 0) {
            content.journal.push_back(describe(write) + " -> " + std::to_string(result));
            return result;
        }
        content.journal.push_back(describe(write));
        content.settings[write.key] = write.value;
        content.writes.push_back(write);
        return 0;
    });
}

void put(const std::string& key, Value value) {
    locked([&](State::Content& content) { content.settings[key] = std::move(value); });
}

} // namespace

void PrintTo(const Write& write, std::ostream* out) {
    *out << describe(write);
}

void setSetting(const std::string& key, bool value) {
    put(key, value);
}
void setSetting(const std::string& key, int value) {
    put(key, value);
}
void setSetting(const std::string& key, double value) {
    put(key, value);
}
void setSetting(const std::string& key, const std::string& value) {
    put(key, value);
}
void setSetting(const std::string& key, const char* value) {
    put(key, std::string(value));
}

void removeSetting(const std::string& key) {
    locked([&key](State::Content& content) { content.settings.erase(key); });
}

std::optional<Value> setting(const std::string& key) {
    return locked([&key](State::Content& content) -> std::optional<Value> {
        const auto found = content.settings.find(key);
        return found != content.settings.end() ? std::optional<Value>(found->second) : std::nullopt;
    });
}

void failReads(const std::string& key, int result) {
    locked([&](State::Content& content) { content.readFailures[key] = result; });
}

void failWrites(const std::string& key, int result) {
    locked([&](State::Content& content) { content.writeFailures[key] = result; });
}

std::vector<Write> writes() {
    return locked([](State::Content& content) { return content.writes; });
}

std::vector<std::string> reads() {
    return locked([](State::Content& content) { return content.reads; });
}

} // namespace FakeKovan

// Gives a stored true as another number than 1, since readers must take any number except 0 for true.
int vconf_get_bool(const char* key, int* value) {
    return FakeKovan::read<bool>(key, [value](bool stored) { *value = stored ? 2 : 0; });
}

int vconf_get_int(const char* key, int* value) {
    return FakeKovan::read<int>(key, [value](int stored) { *value = stored; });
}

int vconf_get_dbl(const char* key, double* value) {
    return FakeKovan::read<double>(key, [value](double stored) { *value = stored; });
}

char* vconf_get_str(const char* key) {
    char* text = nullptr;
    FakeKovan::read<std::string>(key, [&text](const std::string& stored) { text = strdup(stored.c_str()); });
    return text;
}

int vconf_set_bool(const char* key, int value) {
    return FakeKovan::write({key, value != 0});
}

int vconf_set_int(const char* key, int value) {
    return FakeKovan::write({key, value});
}

int vconf_set_dbl(const char* key, double value) {
    return FakeKovan::write({key, value});
}

int vconf_set_str(const char* key, const char* value) {
    return FakeKovan::write({key, std::string(value)});
}
