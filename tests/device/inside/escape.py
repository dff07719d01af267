"""Tries, in the sandbox of the daemon's unit, to have others do what the sandbox forbids, and to kill a process of
root, whose number it is given. Prints a JSON object: for each attempt the error, or null when it succeeded."""
import errno
import json
import os
import signal
import socket
import subprocess
import sys


def attempt(action):
    try:
        action()
    except OSError as error:
        return errno.errorcode[error.errno]
    except subprocess.CalledProcessError as error:
        return error.stderr
    return None


def connect_to_systemd():
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect("/run/systemd/private")


def have_systemd_write():
    subprocess.run(["systemd-run", "--quiet", "--wait", "sh", "-c", "grep CapEff /proc/self/status >/etc/escaped"],
                   capture_output=True, text=True, check=True)


print(json.dumps({
    "systemd by its socket": attempt(connect_to_systemd),
    "systemd by the bus": attempt(have_systemd_write),
    "signal to a process of root": attempt(lambda: os.kill(int(sys.argv[1]), signal.SIGKILL)),
}))
