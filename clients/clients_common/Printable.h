#pragma once

#include <string>
#include <string_view>

// A terminal obeys some letters: control characters, and those that turn the direction of a text, so that it reads as
// another one. What others have written goes through here before a person sees it.
namespace clients_common {

// The text in one line: each byte of a letter that does not print, a line end too, or of what is no UTF-8 is \xNN. At
// most `most` bytes of the text, and "..." behind them when there are more.
std::string printable(std::string_view text, std::size_t most = std::string_view::npos);

// The whole text with its line ends and tabs.
std::string printableLines(std::string_view text);

// A document in JSON with its line ends: what does not print in its texts is \uNNNN, which means the same.
std::string printableJson(std::string_view json);

} // namespace clients_common
