#include <kvplatform.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {

void setDirectory(int directory, const std::optional<std::string>& path) {
    locked([&](State::Content& content) {
        content.directories.erase(directory);
        if (path) {
            content.directories[directory] = *path;
        }
    });
}

} // namespace FakeKovan

const char* kvplatform_getenv(int directory) {
    return FakeKovan::locked([directory](FakeKovan::State::Content& content) -> const char* {
        const auto found = content.directories.find(directory);
        return found != content.directories.end() ? found->second.c_str() : nullptr;
    });
}
