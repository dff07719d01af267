"""What the unit keeps the daemon from."""
import json

from checking import UNIT, Skipped, check, expect, expect_equal, put_program
from upgrade import play
from waiting import wait_until

PROBE = "dax-probe.service"
UNITS = "/run/systemd/system/"
WRITABLE = {"/mnt/systemrw/org.kovan.tv.dax", "/mnt/systemrw/org.kovan.tv.dax/data/tv", "/var/lib/kovan",
            "/var/log/kovan", "/run/kovan"}
PRIVATE = {"/tmp", "/var/tmp"}
NO_CAPABILITIES = "0000000000000000"
MOST_EXPOSED = 1.0


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
    box.run("systemctl", "start", PROBE, check=False)
    return box.journal("--unit=" + PROBE, "_TRANSPORT=stdout")


def main_process_status(box):
    pid = box.property(UNIT, "MainPID")
    lines = (line.split(":", 1) for line in box.read(f"/proc/{pid}/status").splitlines())
    return {name: value.strip() for name, value in lines}


@check("The daemon has no capability, no way to get one, and a filter of system calls")
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


@check("A program in the unit's sandbox writes nowhere but in the four folders, and reaches no network or process")
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


def limit_of_memory(box):
    """In bytes. Skips the check where the kernel does not keep it."""
    limit = box.property(UNIT, "MemoryMax")
    expect(limit.isdigit(), f"the unit has a limit of memory, not {limit}")
    if limit_in_kernel(box, UNIT, ["memory/memory.limit_in_bytes", "memory.max"]) != limit:
        raise Skipped("the kernel does not keep the limit of memory of a unit in this box")
    return int(limit)


@check("The limit of tasks is kept")
def limit_of_tasks(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    limit = box.property(UNIT, "TasksMax")
    expect(limit.isdigit() and int(limit) < 100, f"the unit has a limit of tasks below 100, not {limit}")
    if limit_in_kernel(box, UNIT, ["pids/pids.max", "pids.max"]) != limit:
        raise Skipped("the kernel does not keep the limit of tasks of a unit in this box")
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


@check("The largest message that the bus passes, full of items, fits into the limit of memory")
def largest_message_fits(bench):
    box = bench.booted_box()
    box.run("daxctl", "status")
    play(box)
    before = box.property(UNIT, "InvocationID")
    sent = box.run(*put_program(box, "largest.py"), check=False, within=120)
    expect_equal(sent.status, 0, f"the call ({sent})")
    nobody = "owner             nobody"
    wait_until(lambda: nobody in box.run("daxctl", "status", check=False).output, "the session ends")
    expect_equal(box.property(UNIT, "InvocationID"), before, "the start of the daemon: it is still the first")
    peak = limit_in_kernel(box, UNIT, ["memory/memory.max_usage_in_bytes", "memory.peak"]) or "0"
    status = main_process_status(box)
    return (f"{int(sent.output) / 2**20:.0f} MiB of items; the daemon had at most {status['VmHWM']}, its cgroup "
            f"{int(peak) / 2**20:.0f} MiB")
