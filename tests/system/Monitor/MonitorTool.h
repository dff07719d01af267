#pragma once

#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/Process.h"

namespace DAX::Tests {

// Runs `daxctl` without a desk.
inline FinishedRun daxctl(const std::vector<std::string>& arguments, const std::string& input = "") {
    Command command;
    command.line = arguments;
    command.line.insert(command.line.begin(), DAXCTL);
    command.input = input;
    return run(command);
}

inline std::vector<nlohmann::json> jsonLines(const std::string& text) {
    std::vector<nlohmann::json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(nlohmann::json::parse(line));
    }
    return lines;
}

// What is wrong with the lines by the published schema; empty when all of them fit.
inline std::string faultsBySchema(const std::string& lines) {
    Command command;
    command.line = {"python3", "-c",
                    "import json, jsonschema, sys\n"
                    "schema = json.load(open(sys.argv[1]))\n"
                    "jsonschema.Draft7Validator.check_schema(schema)\n"
                    "check = jsonschema.Draft7Validator(schema)\n"
                    "for number, line in enumerate(sys.stdin, 1):\n"
                    "    for error in check.iter_errors(json.loads(line)):\n"
                    "        print(number, line, error.message)\n",
                    SCHEMA};
    command.input = lines;
    const FinishedRun result = run(command, std::chrono::seconds(60));
    return result.output + result.errors;
}

} // namespace DAX::Tests
