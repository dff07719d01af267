"""Who may call the daemon, and who may be it."""
import json

from checking import UNIT, Failed, check, expect_equal, put_program
from upgrade import CORE_NAME, DAEMON_NAME, log_of_daemon

POLICIES = "/usr/share/dbus-1/system.d/"
POLICY = f"{POLICIES}{DAEMON_NAME}.conf"
POLICY_OF_CORE = f"{POLICIES}{CORE_NAME}.conf"
OBJECT = "/org/kovan/tv/dax/service/cservicemanager"
OBJECT_OF_CORE = "/org/kovan/tv/dax/core/ccoreTV"
ELSEWHERE = "/elsewhere"
OPEN_POLICY = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <policy context="default"><allow own="*"/><allow send_destination="*"/><allow send_path="*"/></policy>
</busconfig>
"""


def add_user(box, name, group=None):
    box.write("/etc/passwd", box.read("/etc/passwd") + f"{name}:x:4711:4711::/:/bin/sh\n")
    box.write("/etc/group", box.read("/etc/group") + f"{name}:x:4711:\n")
    if group:
        lines = [line + ("" if line.endswith(":") else ",") + name if line.startswith(group + ":") else line
                 for line in box.read("/etc/group").splitlines()]
        box.write("/etc/group", "\n".join(lines) + "\n")


@check("An ordinary user is refused, and told why")
def ordinary_user_is_refused(bench):
    box = bench.booted_box()
    done = box.run("daxctl", "upgrade", user="nobody", check=False)
    expect_equal(done.status, 1, "the exit status")
    expect_equal(done.errors, "daxctl: You may not use the update service: be root or a member of dax",
                 "what the user is told")
    if bench.bus == "dbus-daemon":  # the broker starts a service before it looks who may call it
        expect_equal(box.property(UNIT, "ActiveState"), "inactive", "the state of the unit")


@check("A member of the group dax is served")
def member_is_served(bench):
    box = bench.booted_box()
    add_user(box, "viewer", group="dax")
    done = box.run("daxctl", "search", user="viewer", check=False)
    expect_equal((done.status, done.output.splitlines()[:1]), (0, ["version 1100"]), f"a search ({done.errors})")


@check("No other user can own the name")
def nobody_owns_the_name(bench):
    box = bench.booted_box()
    add_user(box, "viewer", group="dax")
    for user in ("nobody", "viewer"):
        done = box.run("busctl", "call", "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                       "RequestName", "su", DAEMON_NAME, "0", user=user, check=False)
        expect_equal((done.status, "denied" in done.errors or "not allowed" in done.errors), (1, True),
                     f"what comes of it when {user} asks for the name: {done}")


def flood_at_a_start(box, program):
    """Starts the daemon while nobody floods the object. The unique name of the flood, and the log of the daemon."""
    box.run("systemctl", "kill", "--signal=KILL", UNIT, check=False)
    box.run("systemctl", "reset-failed", UNIT, check=False)
    flood = box.start(*program, user="nobody")
    name = flood.stdout.readline().strip()
    box.run("daxctl", "status")
    if flood.poll() is not None:
        raise Failed("the flood has ended by itself: " + flood.stderr.read())
    flood.kill()
    flood.communicate(timeout=60)
    return name, log_of_daemon(box, "_SYSTEMD_INVOCATION_ID=" + box.property(UNIT, "InvocationID"))


def reached(name, log):
    return f"Registering new connection named {name}\n" in log + "\n"


@check("No message of another user reaches the object, nor while the daemon starts")
def nothing_reaches_the_object(bench):
    box = bench.booted_box()
    program = put_program(box, "flood.py")
    for _ in range(3):
        name, log = flood_at_a_start(box, program)
        expect_equal(reached(name, log), False, f"whether the daemon registered {name}")
    # Without the policy the same flood comes through.
    box.write(POLICY, OPEN_POLICY)
    box.run("systemctl", "reload", "dbus.service")
    name, log = flood_at_a_start(box, program)
    expect_equal(reached(name, log), True, f"whether the daemon registered {name} without the policy")


@check("No signal of another user for the object of the daemon or the core reaches anybody, whoever it is sent to")
def paths_are_denied(bench):
    box = bench.booted_box()
    program = put_program(box, "strays.py")
    expect_equal(json.loads(box.run(*program).output), [ELSEWHERE], "the objects whose signals arrive")
    for policy in (POLICY, POLICY_OF_CORE):
        box.write(policy, OPEN_POLICY)
    box.run("systemctl", "reload", "dbus.service")
    expect_equal(json.loads(box.run(*program).output), [OBJECT, OBJECT_OF_CORE, ELSEWHERE],
                 "the objects whose signals arrive without the policies")
