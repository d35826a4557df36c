"""A server under test, and a plain client of its WebSocket: sockets only, so that a test can also do it wrong."""
import base64
import contextlib
import json
import os
import signal
import socket
import struct
import subprocess
import urllib.parse
import zlib

PATIENCE = 60  # seconds until a test gives up; never a claim about speed


class Server:
    """zox-view, run as its users run it."""

    def __init__(self, program, *arguments):
        self.process = subprocess.Popen(
            [program, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.address = self.process.stdout.readline().strip()
        parts = urllib.parse.urlsplit(self.address)
        self.host, self.port, self.path = parts.netloc, parts.port, parts.path

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.communicate()

    def end(self, how=signal.SIGTERM):
        """Ends it, gives its exit status and what it said on stderr."""
        self.process.send_signal(how)
        _, said = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, said

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def request(self, target=None, method="GET", host=None, origin=None, extra=""):
        """The status of the answer to one request, its headers and its body."""
        lines = [f"{method} {self.path if target is None else target} HTTP/1.1"]
        lines.append(f"Host: {self.host if host is None else host}")
        if origin is not None:
            lines.append(f"Origin: {origin}")
        with self.connect() as peer:
            peer.sendall(("\r\n".join(lines) + "\r\n" + extra + "\r\n").encode("latin-1"))
            return split_answer(read_all(peer))

    def view(self, **fields):
        return View(self, **fields)


def read_all(peer):
    pieces = []
    with contextlib.suppress(ConnectionError):
        while piece := peer.recv(65536):
            pieces.append(piece)
    return b"".join(pieces)


def split_answer(answer):
    head, _, body = answer.partition(b"\r\n\r\n")
    first, *lines = head.decode("latin-1").split("\r\n")
    headers = {name.lower(): value for name, _, value in (line.partition(": ") for line in lines)}
    return (int(first.split()[1]) if first else 0), headers, body


class View:
    """A WebSocket to a server, as the page opens one."""

    def __init__(self, server, origin=None, path=None, **fields):
        self.number = 0
        self.peer = server.connect()
        target = path or f"{server.path}view" + ("?" + urllib.parse.urlencode(fields) if fields else "")
        key = base64.b64encode(os.urandom(16)).decode()
        self.peer.sendall((
            f"GET {target} HTTP/1.1\r\nHost: {server.host}\r\nOrigin: {origin or 'http://' + server.host}\r\n"
            f"Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
            f"Sec-WebSocket-Key: {key}\r\n\r\n").encode())
        self.rest = b""
        head = b""
        while b"\r\n\r\n" not in head:
            piece = self.peer.recv(4096)
            if not piece:
                break
            head += piece
        head, _, self.rest = head.partition(b"\r\n\r\n")
        self.status = int(head.split()[1]) if head else 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.peer.close()

    def bytes(self, count):
        while len(self.rest) < count:
            piece = self.peer.recv(65536)
            if not piece:
                raise ConnectionError("the server has ended the connection")
            self.rest += piece
        taken, self.rest = self.rest[:count], self.rest[count:]
        return taken

    def send_frame(self, code, data, final=True, masked=True):
        mask = b"\x11\x22\x33\x44"
        length = len(data)
        head = bytes([code | (0x80 if final else 0)])
        flag = 0x80 if masked else 0
        if length < 126:
            head += bytes([flag | length])
        elif length < 65536:
            head += bytes([flag | 126]) + struct.pack(">H", length)
        else:
            head += bytes([flag | 127]) + struct.pack(">Q", length)
        if masked:
            data = bytes(byte ^ mask[i % 4] for i, byte in enumerate(data))
            head += mask
        self.peer.sendall(head + data)

    def say(self, text):
        self.send_frame(1, text.encode())

    def ask(self, do, **fields):
        """Sends a request and gives its number."""
        self.number += 1
        self.say(urllib.parse.urlencode({"do": do, "n": self.number, **fields}))
        return self.number

    def hear(self):
        """The next message: what it says, and the bytes of the picture that comes with it."""
        while True:
            code, length = self.bytes(2)
            if length == 126:
                length, = struct.unpack(">H", self.bytes(2))
            elif length == 127:
                length, = struct.unpack(">Q", self.bytes(8))
            data = self.bytes(length)
            if code == 0x89:
                self.send_frame(10, data)
            elif code == 0x88:
                raise ConnectionError("the server has closed the view")
            elif code == 0x81:
                return json.loads(data), b""
            elif code == 0x82:
                size, = struct.unpack("<I", data[:4])
                return json.loads(data[4:4 + size]), data[4 + size:]
            else:
                raise AssertionError(f"a frame of the kind {code:#x}")

    def hear_all_until(self, wanted):
        heard = []
        while True:
            heard.append(self.hear())
            if wanted(heard[-1][0]):
                return heard

    def opened(self):
        """What the server says of the volume, or why there is none."""
        return self.hear_all_until(lambda said: said["do"] in ("volume", "error", "no volume"))[-1][0]

    def answer(self, number):
        return self.hear_all_until(lambda said: said.get("n") == number)[-1]

    def frame(self, **fields):
        return self.answer(self.ask("frame", **fields))


def grey_pixels(png):
    """Width, height and the bytes of an 8-bit grey PNG, by a reader of its own."""
    assert png[:8] == b"\x89PNG\r\n\x1a\n", png[:16]
    at, packed, width, height = 8, b"", 0, 0
    while at < len(png):
        length, kind = struct.unpack(">I4s", png[at:at + 8])
        data = png[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", data[:10])
            assert (depth, colour) == (8, 0)
        elif kind == b"IDAT":
            packed += data
        at += 12 + length
    return width, height, unfiltered(zlib.decompress(packed), width)


def unfiltered(raw, width):
    above, rows = bytearray(width), bytearray()
    for start in range(0, len(raw), width + 1):
        kind, row = raw[start], bytearray(raw[start + 1:start + 1 + width])
        for x in range(width) if kind else ():
            left, upper = (row[x - 1], above[x - 1]) if x else (0, 0)
            row[x] = (row[x] + predicted(kind, left, above[x], upper)) & 255
        rows += row
        above = row
    return bytes(rows)


def predicted(kind, left, above, corner):
    if kind == 4:
        guess = left + above - corner
        return min((left, above, corner), key=lambda value: abs(guess - value))
    return {1: left, 2: above, 3: (left + above) // 2}[kind]


def difference(one, other):
    """What differs between two pictures, in a few words; "" when nothing does."""
    if one[:2] != other[:2]:
        return f"{one[0]} x {one[1]} and {other[0]} x {other[1]} pixels"
    pairs = [abs(a - b) for a, b in zip(one[2], other[2]) if a != b]
    return f"{len(pairs)} of {len(one[2])} pixels by up to {max(pairs)}" if pairs else ""
