#include "DeviceFile.h"

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>

#include <unistd.h>

#include "AppendFile.h"
#include "KnownFile.h"

namespace KovanHost {

namespace {

// Null while there is no file.
using Device = std::shared_ptr<KeyFile>;

Device parseDevice(const std::string& text) {
    return std::make_shared<KeyFile>(text);
}

std::string textOfDevice(const Device& device) {
    return device->text();
}

KnownFile<Device>& file() {
    using File = KnownFile<Device>;
    static File& known = *std::make_unique<File>(File::Form{"etc/kovan/device.ini", parseDevice, textOfDevice},
                                                 File::FALLS_BACK_TO_DEFAULTS)
                              .release(); // outlives static destructors
    return known;
}

// The values of the wrong type that were reported, and their text in the file.
class ToldValues {
public:
    static ToldValues& get() {
        static ToldValues& told = *std::make_unique<ToldValues>().release(); // outlives static destructors
        return told;
    }

    void tell(const KeyFile& device, const std::string& group, const std::string& name, const std::string& complaint) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        forgetOthers(device);
        const std::string value = device.raw(group, name).value_or("");
        if (m_values.insert_or_assign({group, name}, value).second) {
            appendLine(STDERR_FILENO, devicePath() + ": " + complaint);
        }
    }

    void forget(const std::string& group, const std::string& name) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_values.erase({group, name});
    }

private:
    // Forgets what has another text in the file now, or was in another file.
    void forgetOthers(const KeyFile& device) {
        if (m_path != devicePath()) {
            m_path = devicePath();
            m_values.clear();
        }
        for (auto told = m_values.begin(); told != m_values.end();) {
            const auto& [group, name] = told->first;
            told = device.raw(group, name) == told->second ? std::next(told) : m_values.erase(told);
        }
    }

    std::mutex m_mutex;
    // Guarded by m_mutex.
    std::string m_path;
    std::map<std::pair<std::string, std::string>, std::string> m_values;
};

// `consequence` is the end of the message about a value of the wrong type.
template <class T>
std::optional<T> given(const std::string& group, const std::string& name, const char* consequence) {
    const Device device = file().known();
    if (!device) {
        ToldValues::get().forget(group, name);
        return std::nullopt;
    }
    try {
        std::optional<T> value = device->get<T>(group, name);
        ToldValues::get().forget(group, name);
        return value;
    } catch (const std::runtime_error& error) {
        ToldValues::get().tell(*device, group, name, error.what() + std::string(consequence));
        throw;
    }
}

} // namespace

std::string devicePath() {
    return file().path();
}

FactValue valueOf(const DeviceFact& fact) {
    return std::visit(
        [&](const auto& fallback) -> FactValue {
            try {
                using T = std::decay_t<decltype(fallback)>;
                return given<T>(fact.group, fact.name, "; using the default").value_or(fallback);
            } catch (const std::runtime_error&) {
                return fallback;
            }
        },
        fact.fallback);
}

int resultOf(const std::string& group, const std::string& name) {
    return std::get<int>(valueOf(resultFact(group, name)));
}

template <class T>
std::optional<T> givenValue(const std::string& group, const std::string& name) {
    return given<T>(group, name, "; it cannot be read");
}

template std::optional<bool> givenValue(const std::string& group, const std::string& name);
template std::optional<int> givenValue(const std::string& group, const std::string& name);
template std::optional<std::string> givenValue(const std::string& group, const std::string& name);

KeyFile loadDevice() {
    const Device device = file().load();
    return device ? std::move(*device) : KeyFile();
}

void changeDevice(const std::function<void(KeyFile&)>& change) {
    file().change([&](Device& device) {
        device = device ? device : std::make_shared<KeyFile>();
        change(*device);
    });
}

void writeDefaultDevice(bool evenOverAnother) {
    file().replace([=] {
        if (!evenOverAnother && std::filesystem::exists(devicePath())) {
            throw std::runtime_error(devicePath() + ": there is one already");
        }
        return std::make_shared<KeyFile>(defaultDeviceText());
    });
}

} // namespace KovanHost
