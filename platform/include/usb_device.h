#pragma once

// The mounted USB storage devices. Functions that return an int return 0 for success unless their comment says
// otherwise.

#ifdef __cplusplus
extern "C" {
#endif

typedef struct usb_device_s* usb_device_h;
typedef struct usb_device_list_s* usb_device_list_h;

// Must have succeeded before the others are called. Each successful call needs one usb_device_fini.
int usb_device_init(void);
int usb_device_fini(void);

// A list of the devices that are mounted now. It belongs to the caller, who frees it with usb_device_free_device_list.
int usb_device_get_device_list(usb_device_list_h* list);
int usb_device_free_device_list(usb_device_list_h list);

// How many devices are in the list. Negative: failed.
int usb_device_list_get_count(usb_device_list_h list);

// The first device of the list, and at each further call the next one; null after the last. The handles belong to the
// list and are the same at each walk.
int usb_device_list_get_first(usb_device_list_h list, usb_device_h* device);
int usb_device_list_get_next(usb_device_list_h list, usb_device_h* device);

// Frees a handle. After that, only a walk over the list may still come across it.
int free_usb_device_h(usb_device_h device);

// The device's texts, null for one that it does not tell. They stay valid until the handle is freed.
const char* usb_device_get_mountpath(usb_device_h device);
const char* usb_device_get_devname(usb_device_h device);
const char* usb_device_get_serial(usb_device_h device);
const char* usb_device_get_manufacturer(usb_device_h device);
const char* usb_device_get_product(usb_device_h device);

// The device's numbers.
int usb_device_get_vendor_id(usb_device_h device);
int usb_device_get_product_id(usb_device_h device);

#ifdef __cplusplus
}
#endif
