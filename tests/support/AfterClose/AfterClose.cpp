#include "support/AfterClose.h"

#include <cstdio>
#include <utility>

namespace DAX::Tests {
namespace {

thread_local std::function<void()> afterClose;

} // namespace

void afterNextClose(std::function<void()> function) {
    afterClose = std::move(function);
}

} // namespace DAX::Tests

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the linker's
extern "C" {

int __real_fclose(std::FILE*);
int __wrap_fclose(std::FILE* file) {
    const int result = __real_fclose(file);
    if (const auto function = std::exchange(DAX::Tests::afterClose, nullptr)) {
        function();
    }
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier)
