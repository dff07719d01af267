#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "clients_common/ExitStatus.h"
#include "clients_common/Output.h"
#include "clients_common/Printable.h"
#include "daxctl/Commands.h"
#include "daxctl/MethodOption.h"
#include "monitor/Values.h"

namespace daxctl {

namespace {

using namespace DAX::DAXIPC::DBUSLowLevel;
using Json = nlohmann::ordered_json;

const std::size_t MOST = 200; // characters of one value in the table

struct DecodeOptions {
    bool isCore = false;
    std::string method;
    std::string what = "request";

    Side side() const { return isCore ? Side::CORE : Side::SERVICE; }
    std::string title() const { return method + " " + what; }
};

const ArchiveDescription& descriptionOf(const DecodeOptions& options) {
    const MethodDescription& method = methodNamed(options.side(), options.method);
    if (options.what == "exception") {
        return exceptionArchive();
    }
    return options.what == "reply" ? method.reply : method.request;
}

Json asJson(const DecodedValue& value) {
    Json object = {{"name", value.name}};
    if (value.type == nullptr) {
        return object;
    }
    object["type"] = value.type->name;
    object["offset"] = value.offset;
    object["length"] = value.length;
    object["value"] = monitor::valueAsJson(value);
    if (!value.children.empty()) {
        auto fields = Json::array();
        for (const DecodedValue& child : value.children) {
            fields.push_back(asJson(child));
        }
        object["fields"] = fields;
    }
    if (value.omitted > 0) {
        object["omitted"] = value.omitted;
    }
    return object;
}

Json asJson(const DecodeOptions& options, const DecodedArchive& archive, std::size_t size) {
    auto fields = Json::array();
    for (const DecodedValue& value : archive.values) {
        fields.push_back(asJson(value));
    }
    Json document = {{"side", options.isCore ? "core" : "service"},
                     {"method", options.method},
                     {"archive", options.what},
                     {"size", size},
                     {"read", archive.end},
                     {"fields", fields},
                     {"breakage", nullptr}};
    if (archive.breakage) {
        document["breakage"] = {{"offset", archive.breakage->offset},
                                {"field", archive.breakage->field},
                                {"reason", archive.breakage->reason}};
    }
    return document;
}

void printRow(const std::string& offset, const std::string& length, const std::string& name, const std::string& type,
              const std::string& value) {
    std::printf("%8s%8s  %-24s  %-24s  %s\n", offset.c_str(), length.c_str(), name.c_str(), type.c_str(),
                value.c_str());
}

// An optional is shown as what is in it; what is in a record or a list follows it.
void printValue(const DecodedValue& value, const std::string& name, int depth) {
    if (value.type == nullptr) {
        return; // the archive broke before it
    }
    const bool isParent = !value.children.empty();
    printRow(std::to_string(value.offset), std::to_string(value.length),
             std::string(std::size_t(depth) * 2, ' ') + name, value.type->name,
             isParent ? "" : monitor::valueAsText(value, MOST));
    const bool isOptional = value.type->form == TypeDescription::Form::OPTIONAL;
    std::size_t index = 0;
    for (const DecodedValue& child : value.children) {
        const std::string own = isOptional ? "value" : child.name;
        printValue(child, own.empty() ? "[" + std::to_string(index) + "]" : own, depth + 1);
        ++index;
    }
    if (value.omitted > 0) {
        printRow("", "", std::string(std::size_t(depth + 1) * 2, ' ') + std::to_string(value.omitted) + " more", "",
                 "");
    }
}

void printForPeople(const DecodeOptions& options, const ArchiveDescription& description, const DecodedArchive& archive,
                    const std::string& bytes) {
    if (!description.exists) {
        std::printf("%s has no archive.%s\n", options.title().c_str(),
                    bytes.empty() ? "" : " Nobody reads these bytes.");
        return;
    }
    printRow("offset", "length", "field", "type", "value");
    for (const DecodedValue& value : archive.values) {
        printValue(value, value.name, 0);
    }
    if (description.fields.empty() && !archive.breakage) {
        std::puts("  the header alone");
    }
    if (hasUnreadBytes(archive, bytes)) {
        std::printf("%8zu%8zu  nobody reads these bytes\n", archive.end, bytes.size() - archive.end);
    }
}

// One archive is one array of bytes, of which the bus takes 64 MiB at most.
std::string readInput() {
    const std::size_t most = 64 * 1024 * 1024;
    std::string bytes;
    std::vector<char> piece(64 * 1024);
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
        if (count < 0 && errno != EINTR) {
            throw clients_common::Refusal(std::string("The standard input cannot be read: ") + std::strerror(errno));
        }
        if (count == 0) {
            return bytes;
        }
        bytes.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (bytes.size() > most) {
            throw clients_common::Refusal("The standard input has more than 64 MiB. No archive on the bus is larger.");
        }
    }
}

int runDecode(const DecodeOptions& options, bool json) {
    const ArchiveDescription& description = descriptionOf(options);
    const std::string bytes = readInput();
    const DecodedArchive archive = decodeArchive(description, bytes);
    if (json) {
        clients_common::printJson(asJson(options, archive, bytes.size()));
    } else {
        printForPeople(options, description, archive, bytes);
    }
    if (!archive.breakage) {
        return clients_common::EXIT_DONE;
    }
    std::fflush(stdout);
    std::fprintf(stderr, "daxctl: this %s is broken at byte %zu%s: %s.\n", options.title().c_str(),
                 archive.breakage->offset,
                 archive.breakage->field.empty() ? "" : (", in " + archive.breakage->field).c_str(),
                 clients_common::printable(archive.breakage->reason).c_str());
    return clients_common::EXIT_REFUSED;
}

} // namespace

void addDecodeCommand(clients_common::Command& program) {
    static DecodeOptions options;
    auto command = program.addCommand("decode", "Explain the bytes of one message, which come on standard input",
                                      [](bool json) { return runDecode(options, json); });
    command.addFlag("--core", options.isCore, "The method of the update core, not of the service");
    command.add("METHOD", options.method, "Whose archive it is").required();
    command.add("ARCHIVE", options.what, "request, reply, or exception: the third array of a reply that is one")
        .oneOf({"request", "reply", "exception"})
        .showsDefault();
    command.footer("Ends with 1 when the bytes are broken, and says where.");
}

} // namespace daxctl
