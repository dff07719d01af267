#include "BoardType.h"

#include <optional>

namespace {

std::optional<std::string> otherBoard;

} // namespace

extern "C" {

std::string __real__ZN3DAX8Platform12IProductInfo12getBoardTypeB5cxx11Ev();

std::string __wrap__ZN3DAX8Platform12IProductInfo12getBoardTypeB5cxx11Ev() {
    return otherBoard ? *otherBoard : __real__ZN3DAX8Platform12IProductInfo12getBoardTypeB5cxx11Ev();
}
}

namespace DAX::Tests {

BoardType::BoardType(const std::string& board) {
    otherBoard = board;
}

BoardType::~BoardType() {
    otherBoard.reset();
}

} // namespace DAX::Tests
