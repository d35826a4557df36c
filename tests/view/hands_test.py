"""What hands do on the page, with the phantom. Usage: hands_test.py ZOX_VIEW ZOX_MIP [FOLDER]"""
import json
import sys
import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

import phantom
from client import PATIENCE, difference
from page import Page


class Hands(Page):
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


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
