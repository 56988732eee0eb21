#!/usr/bin/python3
"""The wire without the project's code: a server that nobody should trust, and replies by hand.

  wire.py serve SOCKET ANSWER REQUESTS   reads a request, adds its bytes to the file REQUESTS, sends
                                         the bytes of the file ANSWER and closes; until it is killed
  wire.py reply STATUS [OFFSET=NUMBER]...
                                         prints a reply: numbers of 32 bits at these offsets, else 0
"""

import os
import socket
import struct
import sys

REQUEST_SIZE = 136
REPLY_SIZE = 832


def read_request(connection):
    request = b""
    while len(request) < REQUEST_SIZE:
        piece = connection.recv(REQUEST_SIZE - len(request))
        if not piece:
            break
        request += piece
    return request


def serve(path, answer, requests):
    listener = socket.socket(socket.AF_UNIX)
    # Who finds it under its own name can connect.
    listener.bind(path + ".new")
    listener.listen()
    os.rename(path + ".new", path)
    while True:
        connection, _ = listener.accept()
        with connection, open(answer, "rb") as bytes_to_send, open(requests, "ab") as kept:
            kept.write(read_request(connection))
            kept.flush()
            connection.sendall(bytes_to_send.read())


def reply(status, *fields):
    text = bytearray(REPLY_SIZE)
    text[0] = int(status)
    for field in fields:
        offset, number = field.split("=")
        struct.pack_into("=i", text, int(offset), int(number))
    sys.stdout.buffer.write(text)


{"serve": serve, "reply": reply}[sys.argv[1]](*sys.argv[2:])
