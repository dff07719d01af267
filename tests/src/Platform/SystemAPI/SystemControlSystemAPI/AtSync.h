#pragma once

#include <functional>

namespace DAX::Tests {

// While the object lives, the action runs in place of the system's own sync(), which the build file of these tests
// lists under --wrap.
class AtSync {
public:
    explicit AtSync(const std::function<void()>& event);
    ~AtSync();
    AtSync(const AtSync&) = delete;
    AtSync& operator=(const AtSync&) = delete;
};

} // namespace DAX::Tests
