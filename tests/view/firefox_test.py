"""The page in Firefox: the picture, the mouse and the slices. Usage:
firefox_test.py ZOX_VIEW ZOX_MIP [FOLDER]      FOLDER: where screenshots go"""
import base64
import os
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse

from client import PATIENCE, Server, difference, grey_pixels
from marionette import Firefox

ZOX_VIEW, ZOX_MIP = sys.argv[1:3]
SHOTS = sys.argv[3] if len(sys.argv) > 3 else None
PIXELS = """
const {width, height} = document.querySelector('.view canvas');
const copy = new OffscreenCanvas(width, height).getContext('2d');
copy.drawImage(document.querySelector('.view canvas'), 0, 0);
const data = copy.getImageData(0, 0, width, height).data;
let text = '';
for (let i = 0; i < data.length; i += 4) text += String.fromCharCode(data[i]);
return [width, height, btoa(text)];"""


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server(ZOX_VIEW, "--phantom")
        cls.firefox = Firefox(1400, 900)

    @classmethod
    def tearDownClass(cls):
        cls.firefox.quit()
        cls.server.__exit__()

    def until(self, script, wanted):
        deadline = time.monotonic() + PATIENCE
        while (found := self.firefox.run(script)) != wanted:
            self.assertLess(time.monotonic(), deadline, (script, found))
            time.sleep(0.02)

    def rest(self):
        self.until("return [...document.querySelectorAll('.view')].filter(view => view.clientWidth)"
                   "  .every(view => view.dataset.full === '1')", True)

    def open(self, link=""):
        self.firefox.open(self.server.address + link)
        self.until("return document.body?.dataset.ready", "1")
        self.rest()

    def middle(self):
        return self.firefox.run("const box = document.querySelector('.view canvas').getBoundingClientRect();"
                                "return [box.x + box.width / 2, box.y + box.height / 2].map(Math.round)")

    def drag(self, dx, dy, button=0):
        x, y = self.middle()
        moves = [{"type": "pointerMove", "x": x + dx * i // 8, "y": y + dy * i // 8, "duration": 30} for i in range(9)]
        self.firefox.act(moves[0], {"type": "pointerDown", "button": button}, *moves[1:],
                         {"type": "pointerUp", "button": button})

    def field_of_link(self, name):
        """Numbers of the link to the view, which follows the view a little later."""
        self.until(f"return location.hash.includes({name!r} + '=')", True)
        time.sleep(0.3)
        fields = urllib.parse.parse_qs(self.firefox.run("return location.hash.slice(1)"))
        return [float(part) for part in fields[name][0].split(",")]

    def assert_shows(self, *words):
        width, height, data = self.firefox.run(PIXELS)
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "picture.png")
            subprocess.run([ZOX_MIP, "--phantom", "-o", path, "--quiet", "--size", f"{width}x{height}", *words], check=True)
            with open(path, "rb") as file:
                expected = grey_pixels(file.read())
        self.assertEqual(difference((width, height, base64.b64decode(data)), expected), "")

    def shot(self, name):
        if SHOTS:
            self.firefox.shot(os.path.join(SHOTS, f"firefox-{name}.png"))

    def test_drag_turns(self):
        self.open()
        self.assert_shows()
        self.drag(-160, 80)
        self.rest()
        azimuth, = self.field_of_link("azimuth")
        elevation, = self.field_of_link("elevation")
        self.assertAlmostEqual(azimuth, 64, delta=4)
        self.assertAlmostEqual(elevation, 32, delta=3)
        self.assert_shows("--view", f"{azimuth},{elevation}")
        self.shot("turned")

    def test_right_drag_sets_the_window(self):
        self.open("#window=300,1000")
        self.drag(80, 40, button=2)
        self.rest()
        center, width = self.field_of_link("window")
        self.assertGreater(center, 400)
        self.assertGreater(width, 1150)
        self.assert_shows("--window", f"{center},{width}")

    def test_wheel_zooms(self):
        self.open()
        self.firefox.turn_wheel(*self.middle(), -300)
        self.rest()
        self.assertGreater(self.field_of_link("zoom")[0], 1.3)

    def test_click_shows_slices(self):
        self.open("#azimuth=20")
        x, y = self.middle()
        self.firefox.act({"type": "pointerMove", "x": x, "y": y, "duration": 0}, {"type": "pointerDown", "button": 0},
                         {"type": "pointerUp", "button": 0})
        self.until("return [...document.querySelectorAll('.view')].filter(view => view.clientWidth).length", 4)
        self.rest()
        self.assertEqual(len(self.field_of_link("mark")), 3)
        self.assertIn("Value", self.firefox.run("return document.getElementById('said').textContent"))
        self.shot("slices")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
