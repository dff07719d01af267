#pragma once

#include <functional>

namespace FakeKovan {

// From now on the reporting service does this with each event before it takes it. For the rest of the process: set it
// in a child.
void onEvent(std::function<void()> action);

} // namespace FakeKovan
