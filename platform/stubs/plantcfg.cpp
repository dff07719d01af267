#include "plantcfg.h"

#include "Call.h"

namespace {

const int SUCCESS = 1;

} // namespace

int plantcfg_reset(int) {
    return KovanStubs::answer(__func__, SUCCESS);
}

int plantcfg_get_model_enum(int* value) {
    return KovanStubs::answer(__func__, value, 0, SUCCESS);
}

int plantcfg_get_localset_enum(int* value) {
    return KovanStubs::answer(__func__, value, 0, SUCCESS);
}
