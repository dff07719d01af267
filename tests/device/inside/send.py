"""Sends a datagram to this machine by the network, and prints the name of the error, or "sent"."""
import errno
import socket

try:
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
        sender.sendto(b"x", ("127.0.0.1", 9))
        print("sent")
except OSError as error:
    print(errno.errorcode[error.errno])
