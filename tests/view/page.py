"""The page in a headless Chromium, for the tests beside this file, whose command line is ZOX_VIEW ZOX_MIP [FOLDER]:
screenshots go into FOLDER."""
import base64
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
from selenium.webdriver.support.ui import WebDriverWait

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


class Page(unittest.TestCase):
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
