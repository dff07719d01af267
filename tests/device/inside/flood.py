"""Sends calls and signals to the update service's object, at every connection that the bus will make next, until it is
ended. An attacker does so who wants to reach the daemon while it has no name yet. Prints its own unique name."""
import select

from bus import INTERFACE, METHOD_CALL, NO_REPLY, OBJECT, SIGNAL, Connection, message

NEXT = 60  # connections


def drain(bus):
    while select.select([bus], [], [], 0)[0]:
        if not bus.recv(65536):
            raise SystemExit("the bus has ended the connection")


def main():
    bus = Connection()
    print(bus.name, flush=True)
    number = int(bus.name.rpartition(".")[2])
    while True:
        for target in range(number + 1, number + NEXT):
            for kind in (METHOD_CALL, SIGNAL):
                bus.socket.sendall(message(kind, bus.next_serial(), f":1.{target}", OBJECT, INTERFACE,
                                           "getCurrentVersion", flags=NO_REPLY))
        drain(bus.socket)


main()
