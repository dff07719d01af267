#include "clients_common/Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "clients_common/CommandLine.h"
#include "clients_common/Printable.h"

namespace clients_common {

namespace {

// A stream does not tell why it has failed, so that one more line end has to fail.
int writingError() {
    return ::write(STDOUT_FILENO, "\n", 1) < 0 ? errno : EIO;
}

} // namespace

std::string jsonText(const nlohmann::ordered_json& document, int indent) {
    return printableJson(document.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void printJson(const nlohmann::ordered_json& document) {
    std::cout << jsonText(document, 2) << std::endl;
}

void flushOutput() {
    std::cout.flush();
    std::fflush(stdout);
    if (!std::cout || std::ferror(stdout) != 0) {
        throw Refusal(std::string("The standard output cannot be written: ") + std::strerror(writingError()));
    }
}

} // namespace clients_common
