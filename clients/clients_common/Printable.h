#pragma once

#include <string>
#include <string_view>

// A terminal obeys some bytes. What others have written goes through here before a person sees it.
namespace clients_common {

// The text in one line: a byte that does not print, a line end too, is \xNN. At most `most` bytes of the text, and
// "..." behind them when there are more.
std::string printable(std::string_view text, std::size_t most = std::string_view::npos);

// The whole text with its line ends and tabs.
std::string printableLines(std::string_view text);

} // namespace clients_common
