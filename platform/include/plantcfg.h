#pragma once

// The device's factory configuration. Every function returns 1 for success and anything else for failure; a failure
// leaves the value as it was. Any thread may call.

#ifdef __cplusplus
extern "C" {
#endif

// Restores the factory values. `mode` 0 is the plain reset.
int plantcfg_reset(int mode);

// The numbers of the device's model and of its local set.
int plantcfg_get_model_enum(int* value);
int plantcfg_get_localset_enum(int* value);

#ifdef __cplusplus
}
#endif
