"""Nobody sends signals for some objects to a connection of root that has no name, as those of the daemon and of the
core have none while they start. Prints a JSON array of the objects whose signals arrive."""
import json
import os

from bus import BUS, OBJECT, SIGNAL, Connection, field, message

OBJECT_OF_CORE = "/org/kovan/tv/dax/core/ccoreTV"
ELSEWHERE = "/elsewhere"  # comes last
OBJECTS = (OBJECT, OBJECT_OF_CORE, ELSEWHERE)
NOBODY = 65534


def send(receiver):
    os.setresuid(NOBODY, NOBODY, NOBODY)
    sender = Connection()
    for path in OBJECTS:
        sender.socket.sendall(message(SIGNAL, sender.next_serial(), receiver, path, "a.b", "Stray"))
    # The bus has dealt with all of them before it answers.
    sender.call(BUS, "/org/freedesktop/DBus", BUS, "GetId")


def main():
    receiver = Connection()
    pid = os.fork()
    if pid == 0:
        try:
            send(receiver.name)
        finally:
            os._exit(0)
    arrived = []
    while ELSEWHERE not in arrived:
        _, fields, _ = receiver.receive()
        arrived += [path for path in OBJECTS if field(1, b"o", path) in fields]
    os.waitpid(pid, 0)
    print(json.dumps(arrived))


main()
