#pragma once

#include <functional>

namespace DAX::Tests {

// While it lives, this happens when the program has all file systems written, instead of the system's own sync(), which
// stands under --wrap in the build file of these tests.
class AtSync {
public:
    explicit AtSync(const std::function<void()>& event);
    ~AtSync();
    AtSync(const AtSync&) = delete;
    AtSync& operator=(const AtSync&) = delete;
};

} // namespace DAX::Tests
