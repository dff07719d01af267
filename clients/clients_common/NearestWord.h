#pragma once

#include <optional>
#include <string>
#include <vector>

namespace clients_common {

// The candidate that a person most likely meant by the word: one that the word begins, or that differs from it by a few
// slips of the fingers, more in a long word. Upper case is as lower case. The first of several that are as near. Empty
// when none is near.
std::optional<std::string> nearestWord(const std::string& word, const std::vector<std::string>& candidates);

} // namespace clients_common
