"""The bus's protocol by hand, for what no ordinary client would send. It knows what the programs beside it need."""
import os
import socket
import struct

DAEMON = "org.kovan.tv.dax.service.servicemanager"
OBJECT = "/org/kovan/tv/dax/service/cservicemanager"
INTERFACE = "org.kovan.tv.dax.service.iservicemanager"
BUS = "org.freedesktop.DBus"
METHOD_CALL, REPLY, ERROR, SIGNAL = 1, 2, 3, 4
NO_REPLY = 1
REPLY_SERIAL = 5  # a field's code


def padding(length, size):
    return b"\0" * (-length % size)


def aligned(data, size):
    return data + padding(len(data), size)


def field(code, signature, text):
    data = struct.pack("<B", code) + b"\1" + signature + b"\0"
    if signature == b"g":
        return data + struct.pack("<B", len(text)) + text.encode() + b"\0"
    return aligned(data, 4) + struct.pack("<I", len(text)) + text.encode() + b"\0"


def message(kind, serial, destination, path, interface, member, body=None, flags=0):
    """The bytes of a message; the body is an array of bytes."""
    parts = [field(1, b"o", path), field(2, b"s", interface), field(3, b"s", member), field(6, b"s", destination)]
    data = b""
    if body is not None:
        parts.append(field(8, b"g", "ay"))
        data = struct.pack("<I", len(body)) + body
    fields = b""
    for part in parts:
        fields = aligned(fields, 8) + part
    head = struct.pack("<BBBBIII", ord("l"), kind, flags, 1, len(data), serial, len(fields))
    return aligned(head + fields, 8) + data


class Connection:
    """To the system bus."""

    def __init__(self):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect("/run/dbus/system_bus_socket")
        self.socket.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
        if not self.socket.recv(1024).startswith(b"OK"):
            raise SystemExit("the bus does not let this user in")
        self.socket.sendall(b"BEGIN\r\n")
        self._serial = 0
        answer = self.call(BUS, "/org/freedesktop/DBus", BUS, "Hello")
        self.name = answer[4:-1].decode()

    def next_serial(self):
        self._serial += 1
        return self._serial

    def call(self, destination, path, interface, member, body=None):
        """The body of the answer; an error of the bus ends the program."""
        serial = self.next_serial()
        self.socket.sendall(message(METHOD_CALL, serial, destination, path, interface, member, body))
        while True:
            kind, fields, answer = self.receive()
            # The number of the call stands behind its code and signature, at a multiple of four bytes.
            if struct.pack("<B", REPLY_SERIAL) + b"\1u\0" + struct.pack("<I", serial) in fields:
                if kind == ERROR:
                    raise SystemExit(f"{member}: {answer[4:].decode(errors='replace')}")
                return answer

    def receive(self):
        """The kind of the next message, the bytes of its fields, and its body."""
        head = self._read(16)
        _, kind, _, _, body, _, fields = struct.unpack("<BBBBIII", head)
        rest = self._read(fields + len(padding(fields, 8)))
        return kind, rest, self._read(body)

    def _read(self, count):
        data = bytearray()
        while len(data) < count:
            part = self.socket.recv(min(count - len(data), 1 << 20))
            if not part:
                raise SystemExit("the bus has ended the connection")
            data += part
        return bytes(data)


def arrays(body):
    """The arrays of bytes that a body has."""
    found, at = [], 0
    while at < len(body):
        at += -at % 4
        length, = struct.unpack_from("<I", body, at)
        found.append(body[at + 4:at + 4 + length])
        at += 4 + length
    return found


class Client:
    """Calls the update service."""

    HEADER = "22 serialization::archive 18"

    def __init__(self):
        self.bus = Connection()

    def call(self, method, *arguments):
        """The result without its header. An exception of the service ends the program."""
        words = [word if isinstance(word, bytes) else str(word).encode() for word in (self.HEADER, *arguments)]
        archive = b" ".join(words)
        kind, function, result = arrays(self.bus.call(DAEMON, OBJECT, INTERFACE, method, archive))
        if kind != b"REPLY":
            raise SystemExit(f"{method}: {function.decode()}: {result.decode(errors='replace')}")
        return result.decode()[len(self.HEADER) + 1:].rstrip("\n")
