"""The daemon starts when it is called."""
from checking import UNIT, check, expect, expect_equal, expect_in
from upgrade import DAEMON_NAME, log_of_daemon, owner_of

import re

LOG_LINE = re.compile(r"^\[DAXService-[\d.]+\]\[\d+ DAXService\]\[\d+\]\[(?:DBG|INF|WRN|ERR)\] (?:\w+\.cpp:\d+>)?\S")


@check("The first call starts the unit through systemd")
def first_call_starts_the_unit(bench):
    box = bench.booted_box()
    expect_equal(box.property(UNIT, "ActiveState"), "inactive", "the state of the unit before the first call")
    status = box.run("daxctl", "status")
    expect_in("daemon            was not running; this has started it", status.output, "the status")
    expect_equal(box.property(UNIT, "ActiveState"), "active", "the state of the unit")
    expect_equal(owner_of(box, DAEMON_NAME), box.property(UNIT, "MainPID"), "the process that owns the name")
