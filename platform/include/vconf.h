#pragma once

// The device's settings store. Keys under "db/" survive a reboot, keys under "memory/" live until power-off.
// Every function returns 0 for success and anything else for failure: a missing key, a value of another type, an empty
// key, a store that cannot be reached. Any thread may call.

#ifdef __cplusplus
extern "C" {
#endif

int vconf_get_bool(const char* key, int* value);
int vconf_get_int(const char* key, int* value);
int vconf_get_dbl(const char* key, double* value);

// The caller owns the text and frees it with free(); null when the key cannot be read.
char* vconf_get_str(const char* key);

int vconf_set_bool(const char* key, int value);
int vconf_set_int(const char* key, int value);
int vconf_set_dbl(const char* key, double value);
int vconf_set_str(const char* key, const char* value);

#ifdef __cplusplus
}
#endif
