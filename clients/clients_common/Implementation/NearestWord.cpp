#include "clients_common/NearestWord.h"

#include <algorithm>

namespace clients_common {

namespace {

const std::size_t SHORTEST_BEGINNING = 2;
const std::size_t SHORT_WORD = 3;
const std::size_t LETTERS_A_SLIP = 4;

// So many slips are a typing error, or a part of a long name that was forgotten.
std::size_t slipsIn(const std::string& word) {
    return word.size() <= SHORT_WORD ? 1 : std::max<std::size_t>(2, word.size() / LETTERS_A_SLIP);
}

std::string inSmallLetters(std::string word) {
    for (char& letter : word) {
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return word;
}

bool isLengthNear(const std::string& word, const std::string& candidate) {
    return std::max(word.size(), candidate.size()) - std::min(word.size(), candidate.size()) <= slipsIn(word);
}

// How many letters have to be added, left out, replaced or exchanged with their neighbour to make one of the other.
std::size_t distance(const std::string& left, const std::string& right) {
    std::vector<std::vector<std::size_t>> steps(left.size() + 1, std::vector<std::size_t>(right.size() + 1));
    for (std::size_t i = 0; i <= left.size(); ++i) {
        for (std::size_t j = 0; j <= right.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = steps[i - 1][j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
            steps[i][j] = std::min({replaced, steps[i - 1][j] + 1, steps[i][j - 1] + 1});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
            }
        }
    }
    return steps[left.size()][right.size()];
}

bool begins(const std::string& word, const std::string& candidate) {
    return word.size() >= SHORTEST_BEGINNING && candidate.compare(0, word.size(), word) == 0;
}

} // namespace

std::optional<std::string> nearestWord(const std::string& given, const std::vector<std::string>& candidates) {
    const std::string word = inSmallLetters(given);
    std::optional<std::string> nearest;
    std::size_t least = slipsIn(word) + 1;
    for (const std::string& candidate : candidates) {
        const std::string other = inSmallLetters(candidate);
        if (begins(word, other)) {
            return candidate;
        }
        if (!isLengthNear(word, other)) {
            continue; // a long text is not compared letter by letter
        }
        const std::size_t slips = distance(word, other);
        if (slips < least) {
            least = slips;
            nearest = candidate;
        }
    }
    return nearest;
}

} // namespace clients_common
