// make_corpus FOLDER: writes the seeds of handle_request there, one good call of each method.
#include <fstream>
#include <iostream>

#include "HandleRequestInput.h"
#include "support/WireGoldens.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_corpus FOLDER\n";
        return 2;
    }
    const auto& methods = DAX::Tests::serviceMethods();
    for (std::size_t index = 0; index < methods.size(); ++index) {
        const std::string request = DAX::Tests::golden("service/" + methods[index].name + ".request");
        std::ofstream file(std::string(argv[1]) + "/" + methods[index].name, std::ios::binary);
        file << DAX::Fuzz::makeRequestInput(index, request) << std::flush;
        if (!file) {
            std::cerr << "cannot write " << methods[index].name << "\n";
            return 1;
        }
    }
    return 0;
}
