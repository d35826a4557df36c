"""What the page shows and keeps, on screens and lines of all sizes, and files opened from it. Usage:
page_test.py ZOX_VIEW ZOX_MIP [FOLDER]"""
import os
import sys
import tempfile
import unittest

from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

import phantom
from client import PATIENCE, Server, difference, grey_pixels
from page import ZOX_VIEW, Page, Throttle

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "dicom"))
import make_series  # noqa: E402


class Whole(Page):
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


class Files(Page):
    def choose(self, folder, text):
        """Clicks, in the list of a folder, the first button that begins so; in one go, since lists are replaced."""
        if not self.driver.find_element(By.ID, "file-list").is_displayed():
            self.driver.find_element(By.ID, "files").click()
        WebDriverWait(self.driver, PATIENCE).until(lambda driver: driver.execute_script(
            "if (!$('file-list').open || !$('folder').textContent.startsWith(arguments[0])) return false;"
            "const found = [...document.querySelectorAll('#entries button')]"
            "  .find(button => button.textContent.startsWith(arguments[1]));"
            "found?.click(); return Boolean(found);", folder or "The folder", text))

    def facts(self):
        return self.driver.find_element(By.ID, "facts").text

    def test_files_and_series_of_a_folder_are_opened(self):
        with tempfile.TemporaryDirectory() as folder:
            phantom.write_nrrd(os.path.join(folder, "cube.nrrd"), 900)
            with open(os.path.join(folder, "broken.nrrd"), "w", encoding="ascii") as file:
                file.write("NRRD0004\ntype: short\n\n")
            make_series.make(os.path.join(folder, "study", "thin"))
            with Server(ZOX_VIEW, os.path.join(folder, "cube.nrrd")) as server:
                self.open(address=server.address)
                self.assertFalse(self.driver.find_element(By.ID, "files").is_displayed())
            with Server(ZOX_VIEW, folder) as server:
                self.open(address=server.address)
                self.assertIn("24 × 20 × 16 voxels of 1 × 1 × 1.5 mm", self.facts())
                self.choose("", "broken.nrrd")
                WebDriverWait(self.driver, PATIENCE).until(lambda _: "broken.nrrd" in self.text(".trouble"))
                self.assertEqual(set(self.pixels()[2]), {0})
                self.assertEqual(self.text(".letter.left") + self.text(".bar"), "")
                self.shot("broken-file")
                self.choose("", "cube.nrrd")
                self.rest()
                self.assertIn("16 × 16 × 16 voxels", self.facts())
                self.assertEqual(self.text(".trouble"), "")
                self.assertEqual(self.driver.find_element(By.ID, "title").text, "cube.nrrd")
                self.shot("file")
                self.choose("", "study/")
                self.choose("study", "thin/")
                self.choose("study/thin", "..")
                self.shot("folder")
                self.choose("study", "Open as a series")
                self.rest()
                self.assertIn("24 × 20 × 16 voxels of 1 × 1 × 1.5 mm", self.facts())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
