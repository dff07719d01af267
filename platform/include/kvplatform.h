#pragma once

// The device's named directories.

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    KVPLATFORM_SHARED_DATA = 3,
    KVPLATFORM_RESERVED = 6,
    KVPLATFORM_BINARIES = 7,
    KVPLATFORM_USB_MOUNT = 10,
    KVPLATFORM_BIG_TEMPORARY_STORAGE = 27,
    KVPLATFORM_APPS = 28
} kvplatform_directory_e;

// The absolute path of a kvplatform_directory_e; null when there is none. The text belongs to the platform and stays
// valid.
const char* kvplatform_getenv(int directory);

#ifdef __cplusplus
}
#endif
