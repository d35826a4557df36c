"""Peers that mean no good, or are broken or slow: they get nothing, and others notice nothing.
Usage: hostile_test.py ZOX_VIEW [CONNECTIONS]"""
import contextlib
import random
import resource
import socket
import struct
import subprocess
import sys
import threading
import unittest

from client import Server, View, read_all, split_answer

ZOX_VIEW = sys.argv[1]
CONNECTIONS = int(sys.argv[2]) if len(sys.argv) > 2 else 1500


class Hostile(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server(ZOX_VIEW, "--phantom")
        cls.view = cls.server.view()
        cls.view.opened()
        cls.expected = cls.view.frame(width=64, height=64)[1]

    @classmethod
    def tearDownClass(cls):
        cls.view.peer.close()
        status, said = cls.server.end()
        if (status, said) != (0, ""):
            raise AssertionError(f"the server ended with {status}: {said}")

    def tearDown(self):
        """After each attack: the old view goes on, and a new one and the page are to be had."""
        self.assertIsNone(self.server.process.poll())
        self.assertEqual(self.view.frame(width=64, height=64)[1], self.expected)
        with self.server.view() as view:
            view.opened()
            self.assertEqual(view.frame(width=64, height=64)[1], self.expected)
        self.assertEqual(self.server.request()[0], 200)

    def test_the_page_is_given_with_rules_for_the_browser(self):
        status, headers, body = self.server.request()
        self.assertEqual(status, 200)
        policy = headers["content-security-policy"]
        self.assertIn("default-src 'none'", policy)
        self.assertIn("frame-ancestors 'none'", policy)
        self.assertNotIn("unsafe", policy)
        self.assertEqual(headers["cache-control"], "no-store")
        self.assertEqual(headers["referrer-policy"], "no-referrer")
        self.assertNotIn(b"NONCE", body)
        self.assertNotIn(b"https://", body)
        self.assertNotEqual(policy, self.server.request()[1]["content-security-policy"])

    def test_curl_gets_the_page(self):
        done = subprocess.run(["curl", "--silent", "--show-error", "--fail", self.server.address],
                              capture_output=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertIn(b"<title>zox-view</title>", done.stdout)

    def test_wrong_token_path_or_method(self):
        path = self.server.path
        wrong = path[:-2] + ("0" if path[-2] != "0" else "1") + "/"
        for target in ("/", "/view", wrong, wrong + "view", path[:-1], path + "page.html", path + "../", "//",
                       path + "../../../../etc/passwd", path + "%2e%2e/%2e%2e/etc/passwd", path.upper() + "x",
                       "*", "x", path + "view/", path[:10] + "/", "http://127.0.0.1" + path, path + "\\..\\x"):
            with self.subTest(target=target):
                self.assertIn(self.server.request(target)[0], (400, 404))
        self.assertEqual(self.server.request(path + "view")[0], 426)
        for method in ("POST", "PUT", "DELETE", "OPTIONS", "HEAD", "CONNECT", "BREW"):
            with self.subTest(method=method):
                self.assertIn(self.server.request(method=method)[0], (400, 405))

    def test_wrong_host(self):
        port = self.server.port
        for host in ("", "example.com", f"example.com:{port}", "127.0.0.1.example.com", "localhost.example.com",
                     "0.0.0.0", "[::]", "127.0.0.2", "127.0.0.1:x", "127.0.0.1:", "127.0.0.1:123456", "[::1", "user@127.0.0.1",
                     "127.1", "2130706433"):
            with self.subTest(host=host):
                self.assertEqual(self.server.request(host=host)[0], 403)
        for host in ("localhost", f"localhost:{port}", "127.0.0.1", "[::1]:1234", "127.0.0.1:8080"):
            self.assertEqual(self.server.request(host=host)[0], 200, host)
        self.assertEqual(self.server.request(extra="Host: example.com\r\n")[0], 403)

    def test_wrong_origin(self):
        for origin in ("http://example.com", "null", "https://" + self.server.host, "http://127.0.0.1:1",
                       "http://" + self.server.host + "/", "http://" + self.server.host + ".example.com"):
            with self.subTest(origin=origin):
                self.assertEqual(self.server.request(origin=origin)[0], 403)
                with View(self.server, origin=origin) as view:
                    self.assertEqual(view.status, 403)
        self.assertEqual(self.server.request(origin="http://" + self.server.host)[0], 200)
        # A browser always tells it with a WebSocket.
        upgrade = ("Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
                   "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n")
        self.assertEqual(self.server.request(self.server.path + "view", extra=upgrade)[0], 403)

    def test_wrong_token_opens_no_view(self):
        with View(self.server, path="/" + "0" * 32 + "/view") as view:
            self.assertEqual(view.status, 404)

    def test_large_requests(self):
        self.assertEqual(self.server.request("/" + "a" * 20000)[0], 400)
        self.assertEqual(self.server.request(extra="X: " + "a" * 20000 + "\r\n")[0], 400)
        self.assertEqual(self.server.request(extra="Content-Length: 1000000\r\n")[0], 400)

    def test_half_requests_stay_open_only_so_long_as_there_is_room(self):
        with contextlib.ExitStack() as open_peers:
            for part in (b"", b"G", b"GET / HT", b"GET / HTTP/1.1\r\nHost: x\r\n") * 150:
                peer = open_peers.enter_context(self.server.connect())
                peer.sendall(part)
            self.assertEqual(self.server.request()[0], 200)
            self.assertLess(self.server.descriptors(), 700)

    def test_slow_peers(self):
        stop = threading.Event()

        def trickle():
            with contextlib.suppress(OSError), self.server.connect() as peer:
                for byte in b"GET / HTTP/1.1\r\n" * 1000:
                    peer.sendall(bytes([byte]))
                    if stop.wait(0.05):
                        return

        threads = [threading.Thread(target=trickle) for _ in range(30)]
        for thread in threads:
            thread.start()
        for _ in range(20):
            self.assertEqual(self.view.frame(width=64, height=64)[1], self.expected)
        stop.set()
        for thread in threads:
            thread.join()

    def test_many_connections(self):
        soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
        resource.setrlimit(resource.RLIMIT_NOFILE, (min(hard, CONNECTIONS + 500), hard))
        self.addCleanup(resource.setrlimit, resource.RLIMIT_NOFILE, (soft, hard))
        with contextlib.ExitStack() as open_peers:
            for i in range(CONNECTIONS):
                open_peers.enter_context(self.server.connect())
                if i % 500 == 0:
                    self.assertEqual(self.server.request()[0], 200)
                    self.assertEqual(self.view.frame(width=64, height=64)[1], self.expected)
            self.assertLess(self.server.descriptors(), 700)

    def test_too_many_views(self):
        with contextlib.ExitStack() as open_views:
            status = {open_views.enter_context(self.server.view()).status for _ in range(80)}
        self.assertEqual(status, {101, 503})
        # The places come free again.
        for _ in range(200):
            with self.server.view() as view:
                if view.status == 101:
                    return
        self.fail("the places of views that have gone stay taken")

    def test_random_bytes_as_requests(self):
        draw = random.Random(1)
        for _ in range(300):
            data = draw.randbytes(draw.choice((1, 10, 100, 3000, 30000)))
            if draw.random() < 0.5:
                data = f"GET {self.server.path} HTTP/1.1\r\nHost: ".encode() + data
            if draw.random() < 0.3:
                data += b"\r\n\r\n"
            with contextlib.suppress(OSError), self.server.connect() as peer:
                peer.sendall(data)
                peer.shutdown(socket.SHUT_WR)
                self.assertIn(split_answer(read_all(peer))[0], (0, 400, 403, 404, 405))

    def test_random_bytes_in_a_view(self):
        draw = random.Random(2)
        words = [b"do=frame", b"n=1", b"&", b"=", b"width=", b"99999999999", b"-1", b"slab=", b"nan", b"1e999", b",",
                 b"center=", b"%", b"%00", b"do=pick", b"do=files", b"x=", b"folder=..", b"window=0,0", b"zoom=0",
                 b"height=64", b"width=64", b"azimuth=1e300", b"step=0", b"\xff", b"layout=stack", b"reduction=mean"]
        for _ in range(60):
            with contextlib.suppress(ConnectionError), self.server.view() as view:
                for _ in range(draw.randrange(1, 12)):
                    kind = draw.randrange(5)
                    data = b"".join(draw.choices(words, k=draw.randrange(1, 9)))
                    if kind == 0:
                        view.peer.sendall(draw.randbytes(draw.randrange(1, 200)))
                    elif kind == 1:
                        view.send_frame(draw.randrange(16), data, final=draw.random() < 0.5)
                    elif kind == 2:
                        view.send_frame(1, draw.randbytes(draw.randrange(0, 5000)))
                    elif kind == 3:
                        view.send_frame(1, data, masked=False)
                    else:
                        view.send_frame(1, data)

    def test_view_that_breaks_off(self):
        for _ in range(40):
            with self.server.view() as view:
                view.ask("frame", width=1000, height=1000, step=0.1)
                # Reset instead of a good-bye.
                view.peer.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))

    def test_view_that_sends_too_much(self):
        with contextlib.suppress(ConnectionError), self.server.view() as view:
            view.opened()
            view.send_frame(1, b"a" * 100000)
            with self.assertRaises(ConnectionError):
                while True:
                    view.hear()

    def test_view_that_never_listens(self):
        """It asks and asks; the server stops reading from it when answers pile up, and stays small."""
        with self.server.view() as view:
            view.opened()
            view.peer.settimeout(0.5)
            with contextlib.suppress(TimeoutError, ConnectionError):
                for _ in range(20000):
                    view.ask("frame", width=512, height=512, **{"as": "png"})
            with open(f"/proc/{self.server.process.pid}/statm", encoding="ascii") as file:
                self.assertLess(int(file.read().split()[1]) * resource.getpagesize(), 1 << 30)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
