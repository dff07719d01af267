#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "DAXIPC/DBUSLowLevel/Decoder/MethodDescription.h"

// An input of the target decoder: one byte, followed by an archive. The byte chooses what the archive is taken for.
namespace DAX::Fuzz {

struct DecoderChoice {
    std::string golden; // the file of a good one, below tests/golden/wire
    const DAXIPC::DBUSLowLevel::ArchiveDescription* description;
};

// Each request and each reply of both sides, and last the exceptions.
inline const std::vector<DecoderChoice>& decoderChoices() {
    using DAXIPC::DBUSLowLevel::Side;
    static const std::vector<DecoderChoice> choices = [] {
        std::vector<DecoderChoice> all;
        for (const auto& [side, folder] : {std::pair(Side::SERVICE, "service/"), std::pair(Side::CORE, "core/")}) {
            for (const auto& method : DAXIPC::DBUSLowLevel::methodsOf(side)) {
                all.push_back({folder + method.name + ".request", &method.request});
                all.push_back({folder + method.name + ".reply", &method.reply});
            }
        }
        all.push_back({"exceptions/CUSBReadError", &DAXIPC::DBUSLowLevel::exceptionArchive()});
        return all;
    }();
    return choices;
}

inline std::string makeDecoderInput(std::size_t index, const std::string& archive) {
    return std::string(1, static_cast<char>(index)) + archive;
}

} // namespace DAX::Fuzz
