#pragma once

#include <functional>

namespace FakeKovan {

// From now on the reporting service calls this with each event before it takes the event. It stays for the rest of the
// process: set it in a child.
void onEvent(std::function<void()> action);

} // namespace FakeKovan
