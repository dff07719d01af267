#pragma once

#include <string>

namespace DAX::Tests {

// While the object lives, the program counts as built for this board. The build file of these tests lists
// IProductInfo::getBoardType under --wrap, so that its calls come here.
class BoardType {
public:
    explicit BoardType(const std::string& board);
    ~BoardType();
    BoardType(const BoardType&) = delete;
    BoardType& operator=(const BoardType&) = delete;
};

} // namespace DAX::Tests
