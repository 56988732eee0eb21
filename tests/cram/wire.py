#!/usr/bin/python3
"""The wire without the project's code: a server that nobody should trust, and replies by hand.

  wire.py serve SOCKET ANSWER REQUESTS   reads a request, adds its bytes to the file REQUESTS, sends
                                         the bytes of the file ANSWER and closes; until it is killed
  wire.py reply STATUS [OFFSET=NUMBER]...
                                         prints a reply: numbers of 32 bits at these offsets, else 0
  wire.py ask SOCKET TYPE [OFFSET=NUMBER]...
                                         sends a request, and prints the status of its first reply
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


def record(size, first, fields):
    text = bytearray(size)
    text[0] = int(first)
    for field in fields:
        offset, number = field.split("=")
        struct.pack_into("=i", text, int(offset), int(number))
    return text


def reply(status, *fields):
    sys.stdout.buffer.write(record(REPLY_SIZE, status, fields))


def ask(path, command, *fields):
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect(path)
        connection.sendall(record(REQUEST_SIZE, command, fields))
        answer = connection.recv(REPLY_SIZE, socket.MSG_WAITALL)
    print("status", answer[0] if answer else "none")


{"serve": serve, "reply": reply, "ask": ask}[sys.argv[1]](*sys.argv[2:])
