"""Sends the largest message that the bus passes, full of the items to install that take the most memory. Prints how
many bytes it had."""
import itertools
import time

from bus import Client

LARGEST = 32 * 1024 * 1024 - 4096  # without the head of the message
CHARACTERS = range(0x21, 0xff)     # in an item
# The items are a set. Of the items of two characters there are too few to fill the message.
LENGTH = 3


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
    count = LARGEST // (LENGTH + 3)  # with the number before it, and two blanks
    items = b" ".join(b"%d %s" % (LENGTH, bytes(item))
                      for item in itertools.islice(itertools.product(CHARACTERS, repeat=LENGTH), count))
    print(len(items), flush=True)
    transaction.call("startInstallation", 0, 0, count, 0, items)


main()
