#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

using GKeyFile = struct _GKeyFile; // NOLINT(bugprone-reserved-identifier): the name is GLib's

namespace KovanHost {

// A text in the format of GLib's key files that knows the numbers of its lines. Any thread may read it.
class KeyFile {
public:
    // An empty text.
    KeyFile();

    // Throws std::runtime_error with the number of the first bad line, and what is wrong with it.
    explicit KeyFile(const std::string& text);

    // In the order of the text.
    std::vector<std::string> groups() const;
    std::vector<std::string> keys(const std::string& group) const;

    // A value as bool, int or std::string; empty when there is none. Throws std::runtime_error when it is of another
    // type, with the number of the line, the key, and what the value should be.
    template <class T>
    std::optional<T> get(const std::string& group, const std::string& key) const;

    // A value as it is written in the text; empty when there is none.
    std::optional<std::string> raw(const std::string& group, const std::string& key) const;

    // The exception for a bad group, with the number of its line.
    std::runtime_error wrongGroup(const std::string& group, const char* reason) const;

    // Writes a value and leaves all other lines as they are. Throws what keyLine() and groupLine() throw.
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

// The lines of the text for a group and for a value, with their ends. Throws std::runtime_error for what the format
// cannot express.
std::string groupLine(const std::string& group);
std::string keyLine(const std::string& key, const std::string& value);

} // namespace KovanHost
