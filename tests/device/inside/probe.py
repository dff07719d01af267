"""Tries, in the sandbox of the daemon's unit, what it must not be able to do. Prints a JSON object: for each attempt
the name of the error, or null when it succeeded."""
import ctypes
import errno
import json
import mmap
import os
import socket
import sys
import threading

FOLDERS = ["/", "/etc", "/usr/bin", "/var/lib", "/var/tmp", "/tmp", "/run", "/run/lock", "/root", "/home", "/mnt", "/opt",
           "/srv", "/boot", "/dev/shm", "/dev/mqueue", "/proc/sys/kernel", "/sys/kernel", "/sys/fs/cgroup",
           "/mnt/systemrw", "/mnt/systemrw/org.kovan.tv.dax", "/mnt/systemrw/org.kovan.tv.dax/data/tv",
           "/var/lib/kovan", "/var/log/kovan", "/run/kovan"]
FAMILIES = ["AF_UNIX", "AF_INET", "AF_INET6", "AF_NETLINK", "AF_PACKET"]
UNSHARE_NETWORK = 0x40000000
UNSHARE_USER = 0x10000000
REMOUNT_READ_WRITE = 0x20


def attempt(action):
    try:
        action()
    except OSError as error:
        return errno.errorcode[error.errno]
    return None


def write_in(folder):
    path = os.path.join(folder, "probe-of-the-sandbox")
    with open(path, "w", encoding="ascii"):
        pass


def call_of_c(name, *arguments):
    """Runs a function of the C library that returns -1 when it fails."""
    library = ctypes.CDLL(None, use_errno=True)
    if getattr(library, name)(*arguments) == -1:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number))


def in_child(action):
    """The action in a process of its own, since it would change what this one may do."""
    def run():
        pid = os.fork()
        if pid == 0:
            number = 255
            try:
                action()
                number = 0
            except OSError as error:
                number = error.errno
            finally:
                os._exit(number)
        number = os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])
        if number:
            raise OSError(number, os.strerror(number))
    return run


def make_set_user_id():
    path = "/mnt/systemrw/org.kovan.tv.dax/data/tv/probe-of-the-sandbox"
    try:
        with open(path, "w", encoding="ascii"):
            pass
        os.chmod(path, 0o4755)
    finally:
        os.unlink(path)


def start_threads(count):
    """As many as it can, up to this number, that live at the same time."""
    end = threading.Event()
    started = []
    try:
        for _ in range(count):
            thread = threading.Thread(target=end.wait)
            thread.start()
            started.append(thread)
    except RuntimeError:
        pass
    end.set()
    return len(started)


def status_of_itself():
    with open("/proc/self/status", encoding="ascii") as file:
        lines = dict(line.rstrip("\n").split(":\t", 1) for line in file if ":\t" in line)
    return {name: lines[name].strip() for name in ("CapEff", "CapPrm", "CapBnd", "CapAmb", "NoNewPrivs", "Seccomp")}


def main():
    found = {
        "write": {folder: attempt(lambda: write_in(folder)) for folder in FOLDERS},
        "socket": {name: attempt(lambda: socket.socket(getattr(socket, name), socket.SOCK_DGRAM).close())
                   for name in FAMILIES},
        "other processes": [name for name in os.listdir("/proc") if name.isdigit() and int(name) != os.getpid()],
        "raise the priority": attempt(lambda: os.setpriority(os.PRIO_PROCESS, 0, -5)),
        "real time": attempt(lambda: os.sched_setscheduler(0, os.SCHED_FIFO, os.sched_param(1))),
        "memory to write and execute": attempt(
            lambda: mmap.mmap(-1, 4096, prot=mmap.PROT_READ | mmap.PROT_WRITE | mmap.PROT_EXEC).close()),
        "set-user-id file": attempt(make_set_user_id),
        "device node": attempt(lambda: os.mknod("/mnt/systemrw/org.kovan.tv.dax/probe-node", 0o600 | 0o20000, 0x103)),
        "another root": attempt(lambda: os.chroot("/tmp")),
        "another user": attempt(lambda: os.setuid(65534)),
        "namespace": attempt(lambda: call_of_c("unshare", UNSHARE_NETWORK)),
        "user namespace": attempt(in_child(lambda: call_of_c("unshare", UNSHARE_USER))),
        "lower the priority": attempt(in_child(lambda: os.setpriority(os.PRIO_PROCESS, 0, 5))),
        "mount": attempt(lambda: call_of_c("mount", b"none", b"/", None, REMOUNT_READ_WRITE, None)),
        "host name": attempt(lambda: call_of_c("sethostname", b"x", 1)),
        "kernel log": attempt(lambda: os.close(os.open("/dev/kmsg", os.O_WRONLY))),
        "memory of the kernel": attempt(lambda: os.close(os.open("/dev/mem", os.O_RDONLY))),
        "status": status_of_itself(),
        "threads": start_threads(100),
    }
    json.dump(found, sys.stdout)


main()
