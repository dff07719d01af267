#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Asks the device not to end the calling process when memory runs short. Negative: failed.
int proc_stat_set_vip_process(void);

#ifdef __cplusplus
}
#endif
