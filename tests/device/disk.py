"""A disk that loses its power: an ext4 file system on a loop device, which can be cut off in the middle of its work.

What was synced is on it after the cut. What was not is lost, as long as the kernel has not written it by itself.
"""
import fcntl
import os
import struct
import subprocess

from checking import Skipped
from waiting import wait_until

SIZE = 64 * 1024 * 1024
SHUT_DOWN = 0x8004587D        # EXT4_IOC_SHUTDOWN
WITHOUT_LOG_FLUSH = struct.pack("I", 2)


class Disk:
    """A file system, mounted at `place`. `folder` is a new one."""

    def __init__(self, folder):
        os.makedirs(folder + "/mounted")
        self.place = folder + "/mounted"
        self._image = folder + "/disk.img"
        with open(self._image, "wb") as file:
            file.truncate(SIZE)
        subprocess.run(["mkfs.ext4", "-q", "-F", "-E", "lazy_itable_init=0,lazy_journal_init=0", self._image],
                       check=True)
        self._is_mounted = False
        self.mount()

    def mount(self):
        """What the file system has in its log is put in order at this."""
        done = subprocess.run(["mount", "-t", "ext4", "-o", "loop", self._image, self.place], capture_output=True,
                              text=True, check=False)
        if done.returncode != 0:
            raise Skipped(f"no ext4 file system on a loop device can be mounted: {done.stderr.strip()}")
        self._is_mounted = True

    def cut(self):
        """From now on nothing reaches the disk, and nothing can be read from it."""
        place = os.open(self.place, os.O_RDONLY | os.O_DIRECTORY)
        try:
            fcntl.ioctl(place, SHUT_DOWN, WITHOUT_LOG_FLUSH)
        except OSError as error:
            raise Skipped(f"the kernel cannot shut an ext4 file system down: {error.strerror}") from error
        finally:
            os.close(place)

    def unmount(self):
        """Returns when the file system is gone. Until then the processes that were killed hold it, and to mount it
        again would be to get the one that was cut off."""
        if self._is_mounted:
            wait_until(lambda: subprocess.run(["umount", self.place], capture_output=True, check=False).returncode == 0,
                       "the disk can be unmounted")
            self._is_mounted = False
        wait_until(lambda: self._loop_devices() == "", "the disk is free")

    def _loop_devices(self):
        return subprocess.run(["losetup", "--associated", self._image], capture_output=True, text=True,
                              check=True).stdout

    def check_after_recovery(self):
        """What fsck finds once it has put the log in order; empty for a sound file system."""
        done = subprocess.run(["fsck.ext4", "-p", self._image], capture_output=True, text=True, check=False)
        if done.returncode == 0:
            done = subprocess.run(["fsck.ext4", "-f", "-n", self._image], capture_output=True, text=True, check=False)
        return "" if done.returncode == 0 else done.stdout + done.stderr
