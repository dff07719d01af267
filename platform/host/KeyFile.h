#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

using GKeyFile = struct _GKeyFile;

namespace KovanHost {

// A text in the format of GLib's key files, which knows the numbers of its lines. Once made, any thread may read it.
class KeyFile {
public:
    // Nothing in it.
    KeyFile();

    // std::runtime_error with the number of the first line that is wrong, and what is wrong with it.
    explicit KeyFile(const std::string& text);

    // In the order of the text.
    std::vector<std::string> groups() const;
    std::vector<std::string> keys(const std::string& group) const;

    // A value as bool, int or std::string; empty when there is none. std::runtime_error with the number of the line,
    // the key, and what the value should be, when it is of another type.
    template <class T>
    std::optional<T> get(const std::string& group, const std::string& key) const;

    // A value as it stands in the text; empty when there is none.
    std::optional<std::string> raw(const std::string& group, const std::string& key) const;

    // What to throw over a group that is wrong, with the number of its line.
    std::runtime_error wrongGroup(const std::string& group, const char* reason) const;

    // Writes a value; all other lines stay as they are. std::runtime_error as from the lines below.
    void set(const std::string& group, const std::string& key, const std::string& value);

    const std::string& text() const { return m_text; }

private:
    struct Free {
        void operator()(GKeyFile* file) const;
    };

    std::runtime_error wrongType(const std::string& group, const std::string& key, const char* type) const;

    std::unique_ptr<GKeyFile, Free> m_file;
    std::string m_text;
};

// The lines, with their ends, that say this; std::runtime_error when the format has no way to.
std::string groupLine(const std::string& group);
std::string keyLine(const std::string& key, const std::string& value);

} // namespace KovanHost
