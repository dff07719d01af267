#include "BoardType.h"

#include <optional>

namespace {

std::optional<std::string> otherBoard;

} // namespace

// The linker's option --wrap makes the two of IProductInfo::getBoardType.
std::string realBoardType() __asm__("__real__ZN3DAX8Platform12IProductInfo12getBoardTypeB5cxx11Ev");
std::string wrappedBoardType() __asm__("__wrap__ZN3DAX8Platform12IProductInfo12getBoardTypeB5cxx11Ev");

std::string wrappedBoardType() {
    return otherBoard ? *otherBoard : realBoardType();
}

namespace DAX::Tests {

BoardType::BoardType(const std::string& board) {
    otherBoard = board;
}

BoardType::~BoardType() {
    otherBoard.reset();
}

} // namespace DAX::Tests
