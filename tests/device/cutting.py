"""What runs while the power is cut: an upgrade, a writer of settings, a watch of the lock file; and the box whose disk
is cut off."""
import ctypes
import os
import select
import struct
import subprocess
import tempfile
import threading
import time

from checking import UNIT, Failed
from disk import Disk
from upgrade import DATA, LOCK_FILE, play

OLD_DATE = "20200229T121314"
OLD_DATE_SHOWN = "2020-02-29T12:13:14"
COUNTER = "db/test/counter"
END_SECONDS = 60  # for a process of a box that has lost its power
IN_CREATE, IN_MODIFY, IN_CLOSE_WRITE = 0x100, 0x2, 0x8


class Run:
    """An upgrade that is watched from outside, so that what the client was told outlives the power."""

    def __init__(self, box):
        self._client = box.start("daxctl", "upgrade", "--progress=plain")
        self.told = ""
        self._reader = threading.Thread(target=self._read)
        self._reader.start()

    def _read(self):
        for line in self._client.stderr:
            self.told += line

    def end(self):
        """After the box has lost its power."""
        self._client.wait(END_SECONDS)
        self._reader.join(END_SECONDS)
        self._client.stdout.close()

    def was_told_finalized(self):
        return "Finalization: done" in self.told


class LockWatch:
    """Sees from outside when the lock file is made."""

    def __init__(self, folder):
        self._library = ctypes.CDLL(None, use_errno=True)
        self._queue = self._library.inotify_init1(os.O_CLOEXEC | os.O_NONBLOCK)
        kinds = IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE
        if self._library.inotify_add_watch(self._queue, os.fsencode(folder), kinds) < 0:
            raise Failed(f"{folder} cannot be watched")
        self._happened = []  # to the lock file, and not yet waited for

    def wait(self, kind, within):
        """Until this happens to the lock file. What had happened before it is forgotten."""
        deadline = time.monotonic() + within
        while True:
            while self._happened:
                if self._happened.pop(0) & kind:
                    return
            if not select.select([self._queue], [], [], max(0, deadline - time.monotonic()))[0]:
                raise Failed(f"no lock file is made within {within} s")
            self._happened = list(self._of_lock(os.read(self._queue, 65536)))

    @staticmethod
    def _of_lock(data):
        at = 0
        while at < len(data):
            _, mask, _, length = struct.unpack_from("iIII", data, at)
            name = data[at + 16:at + 16 + length].rstrip(b"\0").decode()
            if name == os.path.basename(LOCK_FILE):
                yield mask
            at += 16 + length

    def close(self):
        os.close(self._queue)


class Counter:
    """Sets a setting to 1, 2, 3 and so on, as fast as it is acknowledged."""

    SCRIPT = 'n=$0; while n=$((n + 1)); do kovanctl setting set "$1" int $n && echo $n || exit 1; done'

    def __init__(self, box, start):
        self.acknowledged = start
        self._writer = box.start("sh", "-c", self.SCRIPT, str(start), COUNTER)
        self._reader = threading.Thread(target=self._read)
        self._reader.start()

    def _read(self):
        for line in self._writer.stdout:
            self.acknowledged = int(line)

    def end(self):
        self._writer.wait(END_SECONDS)
        self._reader.join(END_SECONDS)
        self._writer.stderr.close()


class CutBench:
    """A box whose data and state are on a disk that loses its power."""

    def __init__(self, bench, environment=""):
        self.disk = Disk(tempfile.mkdtemp(dir=bench.folder))
        bench.at_end(self.disk.unmount)
        for name in ("data", "state"):
            os.makedirs(f"{self.disk.place}/{name}")
        self.box = bench.new_box()
        self.box.bind(self.disk.place + "/data", "/mnt/systemrw")
        self.box.bind(self.disk.place + "/state", "/var/lib/kovan")
        if environment:
            self._write(f"{self.box.root}/etc/systemd/system/{UNIT}.d/environment.conf",
                        f"[Service]\nEnvironment={environment}\n")
        self.box.boot()
        self.counted = 0

    @staticmethod
    def _write(path, text):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="ascii") as file:
            file.write(text)

    @property
    def data(self):
        """The data folder, outside."""
        return self.disk.place + "/data" + DATA.removeprefix("/mnt/systemrw")

    def prepare(self):
        """What was there before the cut, and is on the disk."""
        self._write(self.data + "/LastSearchingDate", OLD_DATE)
        self.box.write("/var/log/kovan/core-calls.jsonl", "")
        play(self.box)
        # This disk alone: to sync all would be to sync those of the checks beside this one, too.
        subprocess.run(["sync", "--file-system", self.disk.place], check=True)

    def cut(self):
        self.disk.cut()
        self.box.cut()

    def restore(self):
        self.disk.restore()
        self.box.boot()
