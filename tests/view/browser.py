"""The page in a browser, as a person uses it, with the phantom. Usage:
browser.py ZOX_VIEW ZOX_MIP [FOLDER]      FOLDER: where screenshots go"""
import base64
import json
import os
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.actions.action_builder import ActionBuilder
from selenium.webdriver.common.actions.wheel_input import ScrollOrigin
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

import phantom
from client import PATIENCE, Server, difference, grey_pixels

ZOX_VIEW, ZOX_MIP = sys.argv[1:3]
SHOTS = sys.argv[3] if len(sys.argv) > 3 else None
FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync"]


class Throttle:
    """A line of so many bytes a second to a server, both ways."""

    def __init__(self, port, rate):
        self.port, self.rate = port, rate
        self.listener = socket.create_server(("127.0.0.1", 0))
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            near, _ = self.listener.accept()
            far = socket.create_connection(("127.0.0.1", self.port))
            for one, other in ((near, far), (far, near)):
                threading.Thread(target=self.pass_on, args=(one, other), daemon=True).start()

    def pass_on(self, one, other):
        try:
            while data := one.recv(4096):
                time.sleep(len(data) / self.rate)
                other.sendall(data)
        except OSError:
            pass
        one.close()
        other.close()


class Browser(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server(ZOX_VIEW, "--phantom")
        cls.profile = tempfile.TemporaryDirectory()
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for flag in [*FLAGS, f"--user-data-dir={cls.profile.name}"]:
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    @classmethod
    def tearDownClass(cls):
        cls.driver.quit()
        cls.server.__exit__()
        cls.profile.cleanup()

    def open(self, link="", width=1400, height=900, address=None):
        self.driver.get("about:blank")
        self.driver.set_window_size(width, height)
        self.driver.get((address or self.server.address) + link)
        WebDriverWait(self.driver, PATIENCE).until(
            lambda driver: driver.find_element(By.TAG_NAME, "body").get_attribute("data-ready"))
        self.rest()

    def tearDown(self):
        self.assertEqual(self.driver.get_log("browser"), [])

    def section(self, index=0):
        return self.driver.find_elements(By.CSS_SELECTOR, ".view")[index]

    def canvas(self, index=0):
        return self.section(index).find_element(By.TAG_NAME, "canvas")

    def rest(self, index=0):
        WebDriverWait(self.driver, PATIENCE, 0.02).until(
            lambda _: self.section(index).get_attribute("data-full") == "1")

    def state(self, name):
        return self.driver.execute_script("return state[arguments[0]]", name)

    def text(self, css, index=0):
        return self.section(index).find_element(By.CSS_SELECTOR, css).text

    def shot(self, name):
        if SHOTS:
            self.driver.save_screenshot(os.path.join(SHOTS, name + ".png"))

    def pixels(self, index=0):
        """Width, height and grey values that the canvas shows; that it is grey."""
        width, height, data = self.driver.execute_script(
            "const canvas = arguments[0], {width, height} = canvas;"
            "const copy = new OffscreenCanvas(width, height).getContext('2d', {willReadFrequently: true});"
            "copy.drawImage(canvas, 0, 0);"
            "const data = copy.getImageData(0, 0, width, height).data;"
            "let text = ''; for (let i = 0; i < data.length; i += 4) {"
            "  if (data[i] !== data[i + 1] || data[i] !== data[i + 2]) throw new Error('colour');"
            "  text += String.fromCharCode(data[i]); }"
            "return [width, height, btoa(text)];", self.canvas(index))
        return width, height, base64.b64decode(data)

    def rendered(self, *words):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "picture.png")
            subprocess.run([ZOX_MIP, "--phantom", "-o", path, "--quiet", *words], check=True)
            with open(path, "rb") as file:
                return grey_pixels(file.read())

    def assert_shows(self, *words):
        shown = self.pixels()
        self.assertEqual(difference(shown, self.rendered("--size", f"{shown[0]}x{shown[1]}", *words)), "")

    def drag(self, dx, dy, button="left", index=0, key=None, steps=8):
        actions = ActionBuilder(self.driver, duration=30)
        pointer = actions.pointer_action
        if key:
            actions.key_action.key_down(key)
            for _ in range(2):
                pointer.pause(0.03)
        pointer.move_to(self.canvas(index))
        pointer.pointer_down({"left": 0, "middle": 1, "right": 2}[button])
        for _ in range(steps):
            pointer.move_by(dx // steps, dy // steps)
        pointer.pointer_up({"left": 0, "middle": 1, "right": 2}[button])
        actions.perform()
        if key:
            ActionChains(self.driver).key_up(key).perform()

    def wheel(self, distance, key=None, index=0):
        chain = ActionChains(self.driver)
        if key:
            chain = chain.key_down(key)
        chain = chain.scroll_from_origin(ScrollOrigin.from_element(self.canvas(index)), 0, distance)
        if key:
            chain = chain.key_up(key)
        chain.perform()

    def test_opens_with_the_picture_of_zox_mip(self):
        self.open()
        self.assert_shows("--view", "anterior")
        self.assertEqual([self.text(f".letter.{side}") for side in ("left", "right", "top", "bottom")], list("RLHF"))
        self.assertIn("160 × 192 × 112 voxels of 1.2 × 1 × 1.6 mm", self.driver.page_source)
        self.shot("anterior")

    def test_drag_turns(self):
        self.open()
        self.drag(-160, 80)
        self.rest()
        azimuth, elevation = self.state("azimuth"), self.state("elevation")
        self.assertAlmostEqual(azimuth, 64, delta=3)
        self.assertAlmostEqual(elevation, 32, delta=2)
        self.assert_shows("--view", f"{azimuth},{elevation}")
        self.shot("turned")

    def test_buttons_show_the_six_sides(self):
        self.open()
        ends = {"Anterior": "RLHF", "Posterior": "LRHF", "Left": "APHF", "Right": "PAHF", "Superior": "LRAP", "Inferior": "RLAP"}
        for button in self.driver.find_elements(By.CSS_SELECTOR, "#named button"):
            name = button.text
            button.click()
            self.rest()
            self.assertEqual("".join(self.text(f".letter.{side}") for side in ("left", "right", "top", "bottom")), ends[name])
            self.assertEqual(button.get_attribute("aria-pressed"), "true")
            self.assert_shows("--view", name.lower())

    def test_wheel_zooms_and_middle_drag_moves(self):
        self.open()
        bar = self.text(".bar")
        self.wheel(-700)
        self.rest()
        self.assertGreater(self.state("zoom"), 2)
        self.assertNotEqual(self.text(".bar"), bar)
        before = self.pixels()
        self.drag(80, 0, "middle")
        self.rest()
        self.assertLess(self.state("center")[0], -5)
        self.assertAlmostEqual(self.state("center")[2], 0, delta=1)
        self.assertNotEqual(difference(self.pixels(), before), "")
        self.driver.find_element(By.ID, "fit").click()
        self.rest()
        self.assert_shows()

    def test_right_drag_sets_the_window(self):
        self.open("#window=300,1000")
        self.drag(80, 40, "right")
        self.rest()
        center, width = self.state("window")
        self.assertGreater(center, 400)
        self.assertGreater(width, 1150)
        self.assert_shows("--window", f"{center},{width}")
        field = self.driver.find_element(By.ID, "level")
        field.clear()
        field.send_keys("350", Keys.ENTER)
        self.rest()
        self.assertEqual(self.state("window"), [350, width])
        self.assert_shows("--window", f"350,{width}")
        self.driver.execute_script("document.activeElement.blur()")
        self.shot("window")

    def test_histogram_and_presets_set_the_window(self):
        self.open()
        histogram = self.driver.find_element(By.ID, "histogram")
        ActionChains(self.driver).move_to_element(histogram).click_and_hold().move_by_offset(30, 0).release().perform()
        self.rest()
        center, width = self.state("window")
        self.assert_shows("--window", f"{center},{width}")
        self.driver.execute_script("const p = document.getElementById('preset'); p.value = [...p.options].find(o => o.text == 'all values').value; p.dispatchEvent(new Event('change'))")
        self.rest()
        self.assertEqual(self.state("window"), [0, 2000])
        self.assert_shows("--window", "0,2000")

    def test_shift_and_wheel_scroll_a_slab(self):
        self.open("#thickness=20&azimuth=35&elevation=25")
        self.assert_shows("--view", "35,25", "--depth-range", "-10,10")
        self.wheel(300, Keys.SHIFT)
        self.rest()
        position = self.state("position")
        self.assertEqual(position, 15)
        self.assert_shows("--view", "35,25", "--depth-range", f"{position - 10},{position + 10}")
        self.shot("slab")

    def test_settings_are_those_of_zox_mip(self):
        self.open("#projection=orthographic&interpolation=nearest&step=1&layout=stack&azimuth=-70")
        self.assert_shows("--projection", "orthographic", "--interpolation", "nearest", "--step", "1", "--layout",
                          "stack", "--view", "-70,0")

    def test_click_on_a_vessel_shows_slices_through_it(self):
        self.open("#azimuth=20&window=999,2")
        width, height, pixels = self.pixels()
        # In the middle of the lowest run of white: the vessel of value 1000.
        rows = [y for y in range(height) if pixels[y * width:(y + 1) * width].count(255) > 3]
        row = rows[len(rows) // 3]
        line = pixels[row * width:(row + 1) * width]
        column = line.index(255) + 1
        pointer = ActionChains(self.driver)
        pointer.move_to_element_with_offset(self.canvas(), column - width // 2, row - height // 2).click().perform()
        WebDriverWait(self.driver, PATIENCE).until(lambda _: self.section().get_attribute("data-picked"))
        picked = json.loads(self.section().get_attribute("data-picked"))
        self.assertEqual(picked["voxel_value"], 1000)
        self.assertEqual(phantom.value_at(picked["voxel_position"]), 1000)
        self.assertEqual((picked["x"], picked["y"]), (column, row))
        for index in range(4):
            self.rest(index)
        self.assertEqual(self.state("mark"), picked["voxel_position"])
        self.check_slices(picked)
        self.shot("slices-narrow-window")
        self.driver.execute_script("update({window: [350, 1300]})")
        for index in range(4):
            self.rest(index)
        self.shot("slices")

    def check_slices(self, picked):
        """In each slice the cross stands on the vessel, and the pixels around it are the phantom's."""
        planes = {1: (0, 1), 2: (0, 2), 3: (1, 2)}
        for index, axes in planes.items():
            width, height, pixels = self.pixels(index)
            header = self.driver.execute_script("return views[arguments[0]].picture", index)
            checked = 0
            for offset_x in range(-60, 61, 12):
                for offset_y in range(-60, 61, 12):
                    column, row = width // 2 + offset_x, height // 2 + offset_y
                    across, up = column + 0.5 - width / 2, height / 2 - row - 0.5
                    point = [header["center"][i] + header["pixel_size"] * (across * header["right"][i] + up * header["up"][i])
                             for i in range(3)]
                    around = {phantom.value_at([point[i] + sign * phantom.SPACING[i] * 0.9 * (i == axis) for i in range(3)])
                              for axis in axes for sign in (-1, 0, 1)}
                    if around == {1000} or all(value < 900 for value in around):
                        self.assertEqual(pixels[row * width + column], 255 if around == {1000} else 0, (index, point))
                        checked += 1
            self.assertGreater(checked, 20)

    def test_hover_tells_place_and_value(self):
        self.open("#azimuth=90")
        ActionChains(self.driver).move_to_element(self.canvas()).move_by_offset(3, 3).move_by_offset(2, 2).perform()
        WebDriverWait(self.driver, PATIENCE).until(lambda _: "voxel" in self.text(".under"))
        lines = self.text(".under").split("\n")
        voxel = [int(part) for part in lines[2].removeprefix("voxel ").split(",")]
        around = [phantom.voxel_value([voxel[0] + x, voxel[1] + y, voxel[2] + z])
                  for x in (-1, 0, 1) for y in (-1, 0, 1) for z in (-1, 0, 1)]
        self.assertTrue(min(around) <= float(lines[0].replace("−", "-")) <= max(around), (lines, around))
        place = [float(word) for word in lines[1].split()[1:6:2]]
        for axis, letters in enumerate(("LR", "PA", "HF")):
            sign = 1 if lines[1].split()[2 * axis] == letters[0] else -1
            self.assertAlmostEqual(sign * place[axis], phantom.voxel_position(voxel)[axis], delta=phantom.SPACING[axis] / 2 + 0.06)

    def test_keys(self):
        self.open()
        canvas = self.canvas()
        canvas.send_keys(Keys.ARROW_LEFT * 4, Keys.ARROW_DOWN * 2)
        self.rest()
        self.assertEqual((self.state("azimuth"), self.state("elevation")), (20, 10))
        canvas.send_keys("3")
        self.rest()
        self.assert_shows("--view", "left")
        canvas.send_keys("+", "]")
        self.rest()
        self.assertEqual((self.state("zoom"), self.state("roll")), (1.2, 5))
        canvas.send_keys(Keys.HOME)
        self.rest()
        self.assert_shows()
        canvas.send_keys(Keys.ENTER)
        WebDriverWait(self.driver, PATIENCE).until(lambda _: self.state("mark"))
        self.assertIn("Value", self.driver.find_element(By.ID, "said").get_attribute("textContent"))

    def test_fingers(self):
        self.open()
        box = self.canvas().rect
        x, y = box["x"] + box["width"] / 2, box["y"] + box["height"] / 2

        def touch(kind, *points):
            self.driver.execute_cdp_cmd("Input.dispatchTouchEvent", {
                "type": kind, "touchPoints": [{"x": x + dx, "y": y + dy, "id": i} for i, (dx, dy) in enumerate(points)]})

        touch("touchStart", (0, 0))
        for i in range(1, 6):
            touch("touchMove", (-10 * i, 0))
        touch("touchEnd")
        self.rest()
        self.assertAlmostEqual(self.state("azimuth"), 20, delta=5)
        touch("touchStart", (-30, 0))
        touch("touchStart", (-30, 0), (30, 0))
        for i in range(1, 6):
            touch("touchMove", (-30 - 6 * i, 0), (30 + 6 * i, 0))
        touch("touchEnd")
        self.rest()
        self.assertGreater(self.state("zoom"), 1.5)

    def test_link_brings_the_view_back(self):
        self.open("#azimuth=-40&elevation=10&zoom=1.5&window=350,1300&reduction=minimum&panes=4&mark=10,20,30&center=1,2,3")
        before = self.pixels()
        link = self.driver.execute_script("return link_text()")
        self.open("#" + link)
        self.assertEqual(difference(self.pixels(), before), "")
        self.assertEqual(self.driver.execute_script("return link_text()"), link)
        self.open("#azimuth=x&zoom=1e9&elevation=200&layout=paper&center=1,2&what=1&window=,")
        self.assertEqual((self.state("azimuth"), self.state("zoom"), self.state("elevation")), (0, 100, 90))

    def test_saved_picture_is_that_of_zox_mip(self):
        self.open("#azimuth=35&elevation=25")
        with tempfile.TemporaryDirectory() as folder:
            self.driver.execute_cdp_cmd("Browser.setDownloadBehavior", {"behavior": "allow", "downloadPath": folder})
            self.driver.find_element(By.ID, "save").click()
            path = os.path.join(folder, "phantom.png")
            WebDriverWait(self.driver, PATIENCE).until(lambda _: os.path.exists(path))
            with open(path, "rb") as file:
                saved = grey_pixels(file.read())
        self.assertEqual(difference(saved, self.rendered("--size", f"{saved[0]}x{saved[1]}", "--view", "35,25")), "")

    def test_widths_from_phone_to_wall(self):
        for width, height in ((400, 800), (800, 600), (1920, 1080), (4000, 2000)):
            with self.subTest(width=width):
                self.open("#window=350,1300&azimuth=35&elevation=25", width, height)
                self.assertLessEqual(self.driver.execute_script("return document.documentElement.scrollWidth"), width)
                self.assertGreater(self.canvas().rect["width"], min(width, 4000) * 0.5)
                self.shot(f"width-{width}")

    def test_controls_have_names_and_text_has_contrast(self):
        self.open("#panes=4")
        unnamed = self.driver.execute_script(
            "return [...document.querySelectorAll('button,select,input,canvas')].filter(e => !(e.ariaLabel ||"
            " e.getAttribute('aria-label') || e.textContent.trim() && e.tagName === 'BUTTON' || e.labels?.length))"
            ".map(e => e.outerHTML)")
        self.assertEqual(unnamed, [])
        ratios = self.driver.execute_script("""
            const light = colour => colour.match(/[\\d.]+/g).slice(0, 3).map(x => x / 255)
              .map(x => x <= 0.04045 ? x / 12.92 : ((x + 0.055) / 1.055) ** 2.4)
              .reduce((sum, x, i) => sum + x * [0.2126, 0.7152, 0.0722][i], 0);
            const ground = e => { const c = getComputedStyle(e).backgroundColor;
              return c === 'rgba(0, 0, 0, 0)' && e.parentElement ? ground(e.parentElement) : c; };
            return [...document.querySelectorAll('h1,p,legend,label,button,select,input,.view span,.view output')]
              .map(e => { const [a, b] = [light(getComputedStyle(e).color), light(ground(e))].sort((x, y) => y - x);
                          return [(a + 0.05) / (b + 0.05), e.outerHTML.slice(0, 80)]; });""")
        self.assertGreater(len(ratios), 30)
        for ratio, what in ratios:
            self.assertGreater(ratio, 4.5, what)

    def test_slow_line(self):
        """300 kB/s: pictures get smaller while dragging, and the full one comes all the same."""
        line = Throttle(self.server.port, 300000)
        address = self.server.address.replace(f":{self.server.port}", f":{line.listener.getsockname()[1]}")
        self.open(address=address)
        self.drag(-160, 0, steps=16)
        self.rest()
        self.assert_shows("--view", f"{self.state('azimuth')},0")
        self.shot("slow-line")

    def test_server_that_ends_is_told(self):
        with Server(ZOX_VIEW, "--phantom") as server:
            self.open(address=server.address)
            server.end()
            WebDriverWait(self.driver, PATIENCE).until(lambda _: "ended" in self.text(".trouble"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
