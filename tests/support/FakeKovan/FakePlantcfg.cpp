#include <plantcfg.h>

#include "support/FakeKovan/State.h"

namespace FakeKovan {
namespace {

constexpr int SUCCESS = 1;

int read(int State::Plantcfg::*number, int State::Plantcfg::*result, int* value) {
    return locked([=](State::Content& content) {
        if (content.plantcfg.*result == SUCCESS) {
            *value = content.plantcfg.*number;
        }
        return content.plantcfg.*result;
    });
}

} // namespace

void setPlantcfgResetResult(int result) {
    locked([=](State::Content& content) { content.plantcfg.resetResult = result; });
}

void setModelEnum(int value, int result) {
    locked([=](State::Content& content) {
        content.plantcfg.model = value;
        content.plantcfg.modelResult = result;
    });
}

void setLocalsetEnum(int value, int result) {
    locked([=](State::Content& content) {
        content.plantcfg.localset = value;
        content.plantcfg.localsetResult = result;
    });
}

} // namespace FakeKovan

using FakeKovan::State;

int plantcfg_reset(int mode) {
    return FakeKovan::locked([mode](State::Content& content) {
        content.journal.push_back("plantcfg reset " + std::to_string(mode));
        return content.plantcfg.resetResult;
    });
}

int plantcfg_get_model_enum(int* value) {
    return FakeKovan::read(&State::Plantcfg::model, &State::Plantcfg::modelResult, value);
}

int plantcfg_get_localset_enum(int* value) {
    return FakeKovan::read(&State::Plantcfg::localset, &State::Plantcfg::localsetResult, value);
}
