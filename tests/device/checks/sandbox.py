"""What the unit keeps the daemon from."""
import json

from checking import UNIT, Skipped, check, expect, expect_equal, put_program
from upgrade import play
from waiting import wait_until

PROBE = "dax-probe.service"
VICTIM = "victim.service"
UNITS = "/run/systemd/system/"
WRITABLE = {"/mnt/systemrw/org.kovan.tv.dax", "/mnt/systemrw/org.kovan.tv.dax/data/tv", "/var/lib/kovan",
            "/var/log/kovan", "/run/kovan"}
PRIVATE = {"/tmp", "/var/tmp"}
NO_CAPABILITIES = "0000000000000000"
MOST_EXPOSED = 1.0
LARGEST_TAKES = 500 * 2**20  # bytes, of the daemon's memory


def copy_unit(box, words, *others):
    """A unit with every directive of the daemon's, and then these others, in which another program runs to its end."""
    told = box.run("systemctl", "cat", UNIT).output.splitlines()
    directives = [line for line in told if not line.startswith("BusName=")]  # a name is for one unit alone
    program = ["[Service]", "Type=oneshot", "NotifyAccess=none", "ExecStart=", f"ExecStart={' '.join(words)}", *others]
    box.write(UNITS + PROBE, "\n".join(directives + program) + "\n")
    box.run("systemctl", "daemon-reload")


def run_in_sandbox(box, words, *others):
    """What the program printed."""
    copy_unit(box, words, *others)
    printed = ("--unit=" + PROBE, "_TRANSPORT=stdout")
    before = box.journal(*printed)
    box.run("systemctl", "start", PROBE, check=False)
    return box.journal(*printed).removeprefix(before).lstrip("\n")


def main_process_status(box):
    pid = box.property(UNIT, "MainPID")
    lines = (line.split(":", 1) for line in box.read(f"/proc/{pid}/status").splitlines())
    return {name: value.strip() for name, value in lines}


@check("The daemon has no capability, gets none from a program that it runs, and has a filter of system calls")
def daemon_is_confined(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    status = main_process_status(box)
    for name in ("CapPrm", "CapEff", "CapBnd", "CapAmb", "CapInh"):
        expect_equal(status[name], NO_CAPABILITIES, name)
    expect_equal((status["NoNewPrivs"], status["Seccomp"]), ("1", "2"), "no new privileges, and a filter")


@check("systemd finds little exposure")
def little_exposure(bench):
    box = bench.booted_box()
    told = box.run("systemd-analyze", "security", "--no-pager", UNIT).output.splitlines()[-1]
    exposure = float(told.split(":")[1].split()[0])
    expect(exposure <= MOST_EXPOSED, f"an exposure of at most {MOST_EXPOSED}, not {exposure}")
    return f"exposure {exposure}"


@check("A program in the unit's sandbox writes nowhere but in its folders, has no network, and sees no other process")
def sandbox_holds(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    found = json.loads(run_in_sandbox(box, put_program(box, "probe.py")))
    written = {folder for folder, error in found["write"].items() if error is None}
    expect_equal(written, WRITABLE | PRIVATE, "the folders that it can write to")
    for folder in PRIVATE:
        expect_equal(box.exists(folder + "/probe-of-the-sandbox"), False, f"whether its {folder} is that of all")
    expect_equal(found["socket"], {"AF_UNIX": None, "AF_INET": "EAFNOSUPPORT", "AF_INET6": "EAFNOSUPPORT",
                                   "AF_NETLINK": "EAFNOSUPPORT", "AF_PACKET": "EAFNOSUPPORT"}, "the sockets")
    expect_equal(found["other processes"], [], "the processes that it sees")
    for what in ("raise the priority", "real time", "memory to write and execute", "set-user-id file", "device node",
                 "another root", "another user", "namespace", "mount", "host name"):
        expect(found[what] in ("EPERM", "EACCES"), f"it is refused: {what}: {found[what]}")
    for what in ("kernel log", "memory of the kernel"):
        expect(found[what] in ("ENOENT", "EPERM", "EACCES"), f"it has no device: {what}: {found[what]}")
    expect_equal(found["status"], {"CapEff": NO_CAPABILITIES, "CapPrm": NO_CAPABILITIES, "CapBnd": NO_CAPABILITIES,
                                   "CapAmb": NO_CAPABILITIES, "NoNewPrivs": "1", "Seccomp": "2"}, "its status")


FILTERED = ("user namespace", "lower the priority")
WITHOUT_FILTER = ("RestrictNamespaces=no", "SystemCallFilter=")


@check("The filter refuses what a program may do without a capability")
def filter_refuses(bench):
    box = bench.booted_box()
    program = put_program(box, "probe.py")
    found = json.loads(run_in_sandbox(box, program))
    expect_equal({what: found[what] for what in FILTERED}, dict.fromkeys(FILTERED, "EPERM"), "what comes of it")
    found = json.loads(run_in_sandbox(box, program, *WITHOUT_FILTER))
    expect_equal({what: found[what] for what in FILTERED}, dict.fromkeys(FILTERED), "what comes of it without it")


@check("The sandbox does not hold root: the bus and other processes of root take a program in it for root")
def known_holes(bench):
    """What SECURITY.md lists as open. Whoever closes one of these turns the check round."""
    box = bench.booted_box()
    box.run("systemd-run", "--quiet", "--unit=" + VICTIM, "sleep", "infinity")
    pid = box.property(VICTIM, "MainPID")
    found = json.loads(run_in_sandbox(box, [*put_program(box, "escape.py"), pid]))
    expect(found.pop("systemd by its socket") in ("EACCES", "ECONNREFUSED"), "it is refused: systemd by its socket")
    expect_equal(found, {"systemd by the bus": None, "signal to a process of root": None}, "what is refused")
    wait_until(lambda: box.property(VICTIM, "ActiveState") == "failed", "the process of root has ended")
    expect_equal(box.property(VICTIM, "ExecMainStatus"), "9", "how it ended")
    capabilities = box.read("/etc/escaped").split()[-1]
    expect(int(capabilities, 16) != 0, f"what systemd started for the program has capabilities: {capabilities}")


@check("Even with a network socket, a program in the unit reaches no address")
def no_address(bench):
    box = bench.booted_box()
    expect_equal(set(box.property(UNIT, "IPAddressDeny").split()), {"0.0.0.0/0", "::/0"}, "what the unit denies")
    loosened = ["RestrictAddressFamilies=AF_UNIX AF_INET", "PrivateNetwork=no"]
    answer = run_in_sandbox(box, put_program(box, "send.py"), *loosened)
    if answer == "sent":
        raise Skipped("this kernel does not keep IPAddressDeny=, which needs BPF for cgroups; the unit has no network all "
                      "the same")
    expect_equal(answer, "EPERM", "what a program is told that sends to an address")


@check("The kernel lets the daemon open no device but the usual ones and the console")
def devices_are_few(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    allowed = limit_in_kernel(box, UNIT, ["devices/devices.list"])
    if allowed is None:
        raise Skipped("cgroups of version 2 keep the list of devices in a program that nobody can read")
    if allowed.startswith("a *:* "):
        raise Skipped("the kernel does not keep the list of devices of a unit in this box")
    disks = [line for line in allowed.splitlines() if line.startswith("b ") and not line.startswith("b 0:0 ")]
    expect_equal(disks, [], "the disks in the list")  # 0:0 is systemd's place holder for a device that is hidden


def limit_in_kernel(box, unit, files):
    """The number in the first of these files of the unit's cgroups that is there; None where there is none."""
    group = box.property(unit, "ControlGroup")
    for file in files:
        controller, _, name = file.rpartition("/")
        told = box.read(f"/sys/fs/cgroup/{controller}{group}/{name}").strip()
        if told:
            return told
    return None


def why_no_limit(box, controller):
    controllers = "/sys/fs/cgroup/cgroup.controllers"
    if box.exists(controllers) and controller not in box.read(controllers).split():
        return f"the cgroups of this machine do not hand the controller {controller} down to it"
    return "the kernel does not do it"


def limit_of_memory(box):
    """In bytes. Skips the check where the kernel does not keep it."""
    limit = box.property(UNIT, "MemoryMax")
    expect(limit.isdigit(), f"the unit has a limit of memory, not {limit}")
    if limit_in_kernel(box, UNIT, ["memory/memory.limit_in_bytes", "memory.max"]) != limit:
        raise Skipped("the limit of memory of a unit is not kept in this box: " + why_no_limit(box, "memory"))
    return int(limit)


@check("The limit of tasks is kept")
def limit_of_tasks(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    limit = box.property(UNIT, "TasksMax")
    expect(limit.isdigit() and int(limit) < 100, f"the unit has a limit of tasks below 100, not {limit}")
    if limit_in_kernel(box, UNIT, ["pids/pids.max", "pids.max"]) != limit:
        raise Skipped("the limit of tasks of a unit is not kept in this box: " + why_no_limit(box, "pids"))
    found = json.loads(run_in_sandbox(box, put_program(box, "probe.py")))
    expect_equal(found["threads"], int(limit) - 1, "the threads that a program in the sandbox can start")


@check("The limit of memory is kept")
def limit_of_memory_is_kept(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    mebibytes = limit_of_memory(box) // 1024 // 1024
    hog = put_program(box, "hog.py")
    expect_equal(run_in_sandbox(box, [*hog, str(mebibytes // 2)]), "held", "what a program says that takes half of it")
    run_in_sandbox(box, [*hog, str(mebibytes + 64)])
    # Where cgroups are of version 1, systemd does not know why the kernel killed it.
    end = (box.property(PROBE, "Result"), box.property(PROBE, "ExecMainStatus"))
    expect(end in (("oom-kill", "9"), ("signal", "9")), f"a program that takes more is killed, and not: {end}")


@check("The largest message that the bus passes, full of short items, fits into the limit of memory")
def largest_message_fits(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    limit = limit_of_memory(box)
    play(box)
    before = box.property(UNIT, "InvocationID")
    sent = box.run(*put_program(box, "largest.py"), check=False, within=300)
    expect_equal(sent.status, 0, f"the call ({sent})")
    nobody = "owner             nobody"
    wait_until(lambda: nobody in box.run("daxctl", "status", check=False).output, "the session ends")
    expect_equal(box.property(UNIT, "InvocationID"), before, "the start of the daemon: it is still the first")
    peak = int(main_process_status(box)["VmHWM"].removesuffix(" kB")) * 1024
    of_unit = int(limit_in_kernel(box, UNIT, ["memory/memory.max_usage_in_bytes", "memory.peak"]) or peak)
    expect(peak > LARGEST_TAKES, f"the message takes much memory, not {peak} bytes")
    expect(max(peak, of_unit) < limit, f"the peaks of the daemon and its unit, {peak} and {of_unit}, are below {limit}")
    return (f"{int(sent.output) / 2**20:.0f} MiB of items; the daemon had at most {peak / 2**20:.0f} MiB, its cgroup "
            f"{of_unit / 2**20:.0f} MiB of {limit / 2**20:.0f}")
