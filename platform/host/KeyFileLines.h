#pragma once

#include <cstddef>
#include <string>

namespace KovanHost {

// The lines of a key file, about which GLib tells nothing. They are counted from 1.

// The line at which GLib stops in a text that it refuses. The time that this takes grows linearly with the text.
std::size_t firstBadLine(const std::string& text);

// The line with the key's value, the last one if there are several; 0 when there is none. The text must be good.
std::size_t lineOfKey(const std::string& text, const std::string& group, const std::string& key);

// The line that names the group, the first one if there are several; 0 when there is none. The text must be good.
std::size_t lineOfGroup(const std::string& text, const std::string& group);

// The text with `keyLine` in place of the key's line, the last one if there are several. When there is none, `keyLine`
// is put after the group's last key, or at the end of the text after `groupLine`. The text must be good.
std::string withLine(std::string text, const std::string& group, const std::string& groupLine, const std::string& key,
                     const std::string& keyLine);

} // namespace KovanHost
