#include "plantcfg.h"

#include <nlohmann/json.hpp>

#include "Border.h"
#include "DeviceFile.h"
#include "JsonLines.h"

namespace {

constexpr int SUCCESS = 1;
constexpr int FAILED = -1;

int read(const char* name, int* value) {
    return value == nullptr ? FAILED : KovanHost::atBorder(FAILED, [=] {
        const int result = KovanHost::resultOf(KovanHost::PLANTCFG, name);
        if (result == SUCCESS) {
            *value = KovanHost::factOf<int>(KovanHost::PLANTCFG, name);
        }
        return result;
    });
}

} // namespace

// A reset of any mode is recorded and has no other effect.
int plantcfg_reset(int mode) {
    return KovanHost::atBorder(FAILED, [=] {
        return KovanHost::appendRecord("run/kovan/plantcfg-resets.jsonl", {{"mode", mode}}) ? SUCCESS : FAILED;
    });
}

int plantcfg_get_model_enum(int* value) {
    return read("model", value);
}

int plantcfg_get_localset_enum(int* value) {
    return read("localset", value);
}
