"""usage: grabber_bridge.py SOCKET PORT-FILE

Lets a producer for Windows reach an emulated camera of this system: messages of the local socket SOCKET, one for one,
over a TCP port of this machine, each behind its length. The port's number goes to PORT-FILE.
"""
import os
import socket
import struct
import sys
import threading


def whole(stream, size):
    data = b""
    while len(data) < size:
        piece = stream.recv(size - len(data))
        if not piece:
            return b""
        data += piece
    return data


def to_camera(stream, camera):
    while head := whole(stream, 4):
        camera.send(whole(stream, struct.unpack(">I", head)[0]))
    camera.close()


def to_producer(camera, stream):
    while message := camera.recv(65536):
        stream.sendall(struct.pack(">I", len(message)) + message)
    stream.shutdown(socket.SHUT_RDWR)


def until_gone(copy, *ends):
    try:
        copy(*ends)
    except OSError:
        for end in ends:
            end.close()


path, port_file = sys.argv[1:]
listener = socket.create_server(("127.0.0.1", 0))
with open(port_file + ".new", "w") as file:
    file.write(str(listener.getsockname()[1]))
os.rename(port_file + ".new", port_file)
while True:
    stream, _ = listener.accept()
    stream.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    camera = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
    try:
        camera.connect(path)
    except OSError:
        stream.close()
        continue
    threading.Thread(target=until_gone, args=(to_camera, stream, camera), daemon=True).start()
    threading.Thread(target=until_gone, args=(to_producer, camera, stream), daemon=True).start()
