"""What the page relies on. Usage: server_test.py ZOX_VIEW ZOX_MIP"""
import os
import signal
import subprocess
import sys
import tempfile
import unittest

import phantom
from client import Server, difference, grey_pixels

ZOX_VIEW, ZOX_MIP = sys.argv[1:3]

# The same view in the words of the page and of the command line.
VIEWS = [
    ({}, []),
    ({"azimuth": 35, "elevation": 25, "width": 301, "height": 200}, ["--view", "35,25", "--size", "301x200"]),
    ({"azimuth": 90, "projection": "orthographic"}, ["--view", "left", "--projection", "orthographic"]),
    ({"interpolation": "nearest", "step": 1, "azimuth": -20}, ["--interpolation", "nearest", "--step", "1", "--view", "-20,0"]),
    ({"window": "350,1300", "slab": "-20,35.5"}, ["--window", "350,1300", "--depth-range", "-20,35.5"]),
    ({"azimuth": 180, "elevation": 90, "layout": "stack"}, ["--view", "superior", "--layout", "stack"]),
]


class Pictures(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server(ZOX_VIEW, "--phantom")

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()

    def view(self):
        view = self.server.view()
        self.addCleanup(view.peer.close)
        self.assertEqual(view.opened()["size"], [160, 192, 112])
        return view

    def test_full_pictures_are_those_of_zox_mip(self):
        view = self.view()
        for fields, words in VIEWS:
            with self.subTest(fields=fields), tempfile.TemporaryDirectory() as folder:
                path = os.path.join(folder, "picture.png")
                subprocess.run([ZOX_MIP, "--phantom", "-o", path, "--quiet", *words], check=True)
                with open(path, "rb") as file:
                    expected = grey_pixels(file.read())
                said, png = view.frame(**{"width": 512, "height": 512, "step": 0.5, "as": "png", **fields})
                self.assertEqual(said["do"], "frame", said)
                self.assertGreater(len(set(expected[2])), 50)
                self.assertEqual(difference(grey_pixels(png), expected), "")

    def test_moving_pictures_are_jpeg(self):
        said, jpeg = self.view().frame(width=200, height=150, step=1, **{"as": "jpeg"})
        self.assertEqual((said["width"], said["height"], said["as"]), (200, 150, "jpeg"))
        self.assertEqual((jpeg[:2], jpeg[-2:]), (b"\xff\xd8", b"\xff\xd9"))

    def test_header_tells_where_the_picture_looks(self):
        said, _ = self.view().frame(width=100, height=100, azimuth=90)
        self.assertEqual([round(x, 12) for x in said["right"]], [0, 1, 0])
        self.assertEqual([round(x, 12) for x in said["forward"]], [-1, 0, 0])
        self.assertGreater(said["samples"], said["cast"])
        self.assertGreater(said["cast"], 0)

    def test_newer_replaces_older(self):
        view = self.view()
        old = [view.ask("frame", width=2000, height=2000, step=0.1, azimuth=i) for i in range(5)]
        newest = view.ask("frame", width=64, height=64, azimuth=77)
        heard = view.hear_all_until(lambda said: said.get("n") == newest)
        self.assertEqual(heard[-1][0]["do"], "frame")
        # Every request has its answer, and the newest one the last.
        self.assertEqual(sorted(said["n"] for said, _ in heard), [*old, newest])
        self.assertGreaterEqual(sum(said["do"] == "cancelled" for said, _ in heard), 4)

    def test_click_on_a_vessel_finds_it(self):
        view = self.view()
        for azimuth in (0, 90, 200):
            with self.subTest(azimuth=azimuth):
                # Only the vessel of value 1000 and the ear ring are white with this window.
                fields = {"width": 300, "height": 300, "azimuth": azimuth, "window": "999,2", "step": 0.5}
                _, png = view.frame(**fields, **{"as": "png"})
                width, _, pixels = grey_pixels(png)
                hits = [at for at, pixel in enumerate(pixels) if pixel == 255]
                self.assertGreater(len(hits), 200)
                found = 0
                for at in hits[::25]:
                    said, _ = view.answer(view.ask("pick", x=at % width, y=at // width))
                    self.assertTrue(said["found"])
                    self.assertEqual(said["value"], 1000)
                    self.assertEqual(said["voxel_value"], phantom.voxel_value(said["voxel"]))
                    self.assertEqual([round(x, 9) for x in said["voxel_position"]],
                                     [round(x, 9) for x in phantom.voxel_position(said["voxel"])])
                    for axis in range(3):
                        self.assertLessEqual(abs(said["position"][axis] - said["voxel_position"][axis]),
                                             phantom.SPACING[axis] / 2 + 1e-3)
                    found += phantom.value_at(said["voxel_position"]) == 1000
                self.assertEqual(found, len(hits[::25]))

    def test_pixels_beside_the_volume_show_nothing(self):
        view = self.view()
        view.frame(width=100, height=100, zoom=0.3)
        said, _ = view.answer(view.ask("pick", x=0, y=0))
        self.assertFalse(said["found"])

    def test_slices_show_single_voxels(self):
        view = self.view()
        voxel = [100, 60, 40]
        center = ",".join(map(str, phantom.voxel_position(voxel)))
        for azimuth, elevation in ((0, 0), (90, 0), (0, -90)):
            view.frame(width=201, height=201, azimuth=azimuth, elevation=elevation, projection="orthographic",
                       center=center, slab="0,0", interpolation="nearest")
            said, _ = view.answer(view.ask("pick", x=100, y=100))
            self.assertEqual((said["voxel"], said["value"]), (voxel, phantom.voxel_value(voxel)))

    def test_bad_requests_get_one_sentence(self):
        view = self.view()
        for text in ("do=frame&n=1&width=0", "do=frame&n=1&width=5000&height=10", "do=frame&n=1&zoom=x",
                     "do=frame&n=1&zoom=inf", "do=frame&n=1&step=0.00001", "do=frame&n=1&center=1,2",
                     "do=frame&n=1&center=1,2,3,4", "do=frame&n=1&colour=red", "do=frame&n=1&n=2",
                     "do=frame&n=-1", "do=frame&reduction=most", "do=dance&n=1", "frame", "=", "do=frame&n=%zz",
                     "do=pick&n=1&x=9999&y=0", "do=files", "&".join(f"a{i}=1" for i in range(100)), "\0"):
            with self.subTest(text=text):
                view.frame(width=10, height=10)
                view.say(text)
                said, _ = view.hear()
                self.assertEqual(said["do"], "error")
                self.assertRegex(said["text"], r"^[^\n]+\.$")
        self.assertEqual(view.frame(width=10, height=10)[0]["do"], "frame")

    def test_many_views_at_once(self):
        views = [self.view() for _ in range(12)]
        asked = [view.ask("frame", width=200, height=200, azimuth=10 * i, **{"as": "png"}) for i, view in enumerate(views)]
        together = [view.answer(number)[1] for view, number in zip(views, asked)]
        alone = [views[0].frame(width=200, height=200, azimuth=10 * i, **{"as": "png"})[1] for i in range(12)]
        self.assertEqual(together, alone)


class Program(unittest.TestCase):
    def test_ends_cleanly_in_the_middle_of_work(self):
        for how in (signal.SIGINT, signal.SIGTERM):
            with Server(ZOX_VIEW, "--phantom") as server, server.view() as view:
                view.opened()
                view.ask("frame", width=4000, height=4000, step=0.05)
                self.assertEqual(server.end(how), (0, ""))

    def test_address_is_on_loopback_with_a_token_of_its_own(self):
        with Server(ZOX_VIEW, "--phantom") as one, Server(ZOX_VIEW, "--phantom") as other:
            self.assertRegex(one.address, r"^http://127\.0\.0\.1:\d+/[0-9a-f]{32}/$")
            self.assertNotEqual(one.path, other.path)

    def test_what_cannot_be_shown_is_told_in_one_sentence(self):
        cases = [([], 2), (["--phantom", "x"], 2), (["/nowhere/x.nrrd"], 1), (["--phantom", "--port", "70000"], 2),
                 (["--phantom", "--listen", "localhost"], 2), (["--phantom", "--listen", "192.0.2.1"], 1),
                 ([os.path.dirname(ZOX_MIP) + "/nowhere"], 1), (["--what"], 2)]
        for words, status in cases:
            with self.subTest(words=words):
                done = subprocess.run([ZOX_VIEW, *words], capture_output=True, text=True, timeout=60, check=False)
                self.assertEqual((done.returncode, done.stdout), (status, ""))
                self.assertRegex(done.stderr, r"^zox-view: [^\n]+\.\n$")

    def test_a_port_in_use_is_told(self):
        with Server(ZOX_VIEW, "--phantom") as server:
            done = subprocess.run([ZOX_VIEW, "--phantom", "--port", str(server.port)], capture_output=True, text=True,
                                  timeout=60, check=False)
            self.assertEqual(done.returncode, 1)
            self.assertRegex(done.stderr, r"^zox-view: [^\n]+\.\n$")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
