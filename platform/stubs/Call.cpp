#include "Call.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace KovanStubs {
namespace {

const char BLANK[] = " ";

void note(const char* function) {
    const char* const file = std::getenv("KOVAN_STUBS_CALLS");
    if (file == nullptr || *file == '\0') {
        return;
    }
    char line[128];
    const int length = std::snprintf(line, sizeof(line), "%s\n", function);
    const int descriptor = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0640);
    if (descriptor < 0 || write(descriptor, line, static_cast<std::size_t>(length)) != length) {
        std::fprintf(stderr, "The call of %s cannot be noted in %s: %s\n", function, file, std::strerror(errno));
    }
    if (descriptor >= 0) {
        close(descriptor);
    }
}

bool fits(const char* word, std::size_t length, const char* function) {
    const bool isAll = length == 1 && *word == '*';
    return isAll || (std::strlen(function) == length && std::strncmp(word, function, length) == 0);
}

bool isWorking(const char* function) {
    bool working = false;
    const char* word = std::getenv("KOVAN_STUBS_WORKING");
    for (word = word != nullptr ? word : ""; *word != '\0'; word += std::strcspn(word, BLANK)) {
        word += std::strspn(word, BLANK);
        const bool refuses = *word == '-';
        word += refuses ? 1 : 0;
        if (fits(word, std::strcspn(word, BLANK), function)) {
            working = !refuses;
        }
    }
    return working;
}

} // namespace

bool works(const char* function) noexcept {
    const int callersError = errno; // logging must not change what the caller may look at next
    note(function);
    const bool working = isWorking(function);
    errno = callersError;
    return working;
}

} // namespace KovanStubs
