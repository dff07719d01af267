"""Takes this many MiB of memory, and says so."""
import sys

held = bytearray(int(sys.argv[1]) * 1024 * 1024)
held[::4096] = b"\1" * len(held[::4096])
print("held")
