#pragma once

#include <string>

namespace DAX::Tests {

// While it lives, the program counts as built for this board. IProductInfo::getBoardType stands under --wrap in the
// build file of these tests, and goes through here.
class BoardType {
public:
    explicit BoardType(const std::string& board);
    ~BoardType();
    BoardType(const BoardType&) = delete;
    BoardType& operator=(const BoardType&) = delete;
};

} // namespace DAX::Tests
