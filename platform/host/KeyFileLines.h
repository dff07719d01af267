#pragma once

#include <cstddef>
#include <string>

namespace KovanHost {

// GLib tells nothing of the lines of a key file. They are counted from 1.

// The line that GLib stops at, in a text that it refuses. Takes a time that grows with the text, not faster.
std::size_t firstBadLine(const std::string& text);

// The line that says what the key is, the last if there are several; 0 when there is none. The text is a good one.
std::size_t lineOfKey(const std::string& text, const std::string& group, const std::string& key);

// The line that names the group, the first if there are several; 0 when there is none. The text is a good one.
std::size_t lineOfGroup(const std::string& text, const std::string& group);

// The text with the key's line, the last if there are several, replaced by `keyLine`; where there is none, that stands
// behind the group's last key, or at the end behind `groupLine`. The text is a good one.
std::string withLine(std::string text, const std::string& group, const std::string& groupLine, const std::string& key,
                     const std::string& keyLine);

} // namespace KovanHost
