#include "vconf.h"

#include <cstring>

#include "Call.h"

using KovanStubs::answer;

int vconf_get_bool(const char*, int* value) {
    return answer(__func__, value, 0);
}

int vconf_get_int(const char*, int* value) {
    return answer(__func__, value, 0);
}

int vconf_get_dbl(const char*, double* value) {
    return answer(__func__, value, 0.0);
}

char* vconf_get_str(const char*) {
    return KovanStubs::works(__func__) ? strdup("") : nullptr;
}

int vconf_set_bool(const char*, int) {
    return answer(__func__);
}

int vconf_set_int(const char*, int) {
    return answer(__func__);
}

int vconf_set_dbl(const char*, double) {
    return answer(__func__);
}

int vconf_set_str(const char*, const char*) {
    return answer(__func__);
}
