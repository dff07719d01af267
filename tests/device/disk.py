"""A disk that loses its power: an ext4 file system on a loop device, which can be cut off in the middle of its work.

What was synced is on it after the cut. What was not is lost, as long as the kernel has not written it by itself.
"""
import fcntl
import os
import struct
import subprocess

from checking import Failed, Skipped

SIZE = 64 * 1024 * 1024
SHUT_DOWN = 0x8004587D        # EXT4_IOC_SHUTDOWN
WITHOUT_LOG_FLUSH = struct.pack("I", 2)


class Disk:
    """A file system, mounted at `place`. `folder` is a new one."""

    def __init__(self, folder):
        os.makedirs(folder + "/mounted")
        self.place = folder + "/mounted"
        self._folder = folder
        self._image = folder + "/disk.img"
        self._cuts = 0
        with open(self._image, "wb") as file:
            file.truncate(SIZE)
        subprocess.run(["mkfs.ext4", "-q", "-F", "-E", "lazy_itable_init=0,lazy_journal_init=0", self._image],
                       check=True)
        self._mount()

    def _mount(self):
        """What the file system has in its log is put in order at this."""
        done = subprocess.run(["mount", "-t", "ext4", "-o", "loop", self._image, self.place], capture_output=True,
                              text=True, check=False)
        if done.returncode != 0:
            raise Skipped(f"no ext4 file system on a loop device can be mounted: {done.stderr.strip()}")

    def cut(self):
        """From now on nothing reaches the disk, and nothing can be read from it."""
        place = os.open(self.place, os.O_RDONLY | os.O_DIRECTORY)
        try:
            fcntl.ioctl(place, SHUT_DOWN, WITHOUT_LOG_FLUSH)
        except OSError as error:
            raise Skipped(f"the kernel cannot shut an ext4 file system down: {error.strerror}") from error
        finally:
            os.close(place)

    def restore(self):
        """Mounts what had reached the disk when it was cut off. That is a copy: on a busy machine the kernel holds the
        file system that was cut off for a while, and would give that one again."""
        self.unmount()
        self._cuts += 1
        copy = f"{self._folder}/disk{self._cuts}.img"
        subprocess.run(["cp", "--sparse=always", self._image, copy], check=True)
        os.unlink(self._image)
        self._image = copy
        damage = self._check_after_recovery()
        if damage:
            raise Failed(f"fsck finds damage after the cut:\n{damage}")
        self._mount()

    def unmount(self):
        """It goes when nobody has it open any more."""
        subprocess.run(["umount", "--lazy", self.place], check=True)

    def _check_after_recovery(self):
        """What fsck finds once it has put the log in order; empty for a sound file system."""
        done = subprocess.run(["fsck.ext4", "-p", self._image], capture_output=True, text=True, check=False)
        if done.returncode == 0:
            done = subprocess.run(["fsck.ext4", "-f", "-n", self._image], capture_output=True, text=True, check=False)
        return "" if done.returncode == 0 else done.stdout + done.stderr
