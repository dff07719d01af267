// make_corpus TARGET FOLDER: writes the seeds of the fuzz target there.
#include <fstream>
#include <iostream>
#include <map>
#include <string>

#include "HandleRequestInput.h"
#include "support/WireGoldens.h"

namespace {

using Seeds = std::map<std::string, std::string>; // by the names of their files

// One good call of each method.
Seeds handleRequestSeeds() {
    const auto& methods = DAX::Tests::serviceMethods();
    Seeds seeds;
    for (std::size_t index = 0; index < methods.size(); ++index) {
        const std::string request = DAX::Tests::golden("service/" + methods[index].name + ".request");
        seeds[methods[index].name] = DAX::Fuzz::makeRequestInput(index, request);
    }
    return seeds;
}

// One good text of each form.
Seeds updateTextsSeeds() {
    return {{"progress", "42"},
            {"progressWithDetail", "42|3.5"},
            {"version", "1666.1234"},
            {"majorVersionOnly", "1234"},
            {"modelAndVersion", "T-MODEL-1666.1234"}};
}

int writeSeeds(const Seeds& seeds, const std::string& folder) {
    for (const auto& [name, content] : seeds) {
        std::ofstream file(folder + "/" + name, std::ios::binary);
        file << content << std::flush;
        if (!file) {
            std::cerr << "cannot write " << name << "\n";
            return 1;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::map<std::string, Seeds (*)()> targets{{"handle_request", handleRequestSeeds},
                                                     {"update_texts", updateTextsSeeds}};
    if (argc != 3 || targets.count(argv[1]) == 0) {
        std::cerr << "usage: make_corpus TARGET FOLDER, where TARGET is one of:\n";
        for (const auto& target : targets) {
            std::cerr << "  " << target.first << "\n";
        }
        return 2;
    }
    return writeSeeds(targets.at(argv[1])(), argv[2]);
}
