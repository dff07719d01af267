#include "proc_stat.h"

#include "Call.h"

int proc_stat_set_vip_process() {
    return KovanStubs::answer(__func__);
}
