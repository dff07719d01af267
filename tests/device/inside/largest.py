"""The worst that a caller can have the daemon hold: the largest message that the bus passes, full of items to install.
Prints how many bytes it had."""
import time

from bus import Client

LARGEST = 32 * 1024 * 1024 - 4096  # without the head of the message
SHORTEST = 9                       # an item of six characters, with its length and blanks


def text(value):
    return f"{len(value)} {value}"


def main():
    manager, session, transaction = Client(), Client(), Client()
    manager.call("getService", 4, text("largest"), 2, text("my-session"), "0 ")
    session.call("helloMessage", text("my-session"))
    session.call("startNewTransaction", 2, text("my-transaction"), "0 ")
    transaction.call("helloMessage", text("my-transaction"))
    transaction.call("startSearching", "0 ")
    while transaction.call("getSearchProgress").split()[2] == "1":
        time.sleep(0.05)
    count = LARGEST // SHORTEST
    items = " ".join(f"6 {number:x}" for number in range(0x100000, 0x100000 + count))[:LARGEST]
    items = " ".join(items.split(" ")[:2 * (LARGEST // SHORTEST) - 2])
    count = items.count(" ") // 2 + 1
    print(len(items), flush=True)
    transaction.call("startInstallation", 0, 0, count, 0, items)


main()
