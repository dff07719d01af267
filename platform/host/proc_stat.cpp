#include "proc_stat.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace {

// With this value the kernel ends the process only when no other is left to end.
const char VIP_ADJUSTMENT[] = "-900";

} // namespace

int proc_stat_set_vip_process() {
    const int file = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
    if (file < 0) {
        return -errno;
    }
    const ssize_t written = write(file, VIP_ADJUSTMENT, sizeof(VIP_ADJUSTMENT) - 1);
    const int result = written < 0 ? -errno : 0;
    close(file);
    return result;
}
