"""What a person at the page gets: pictures a second while dragging for three seconds, and the time from rest
to the full picture. Usage: view_feel.py ZOX_VIEW FILE..."""
import os
import statistics
import sys
import tempfile
import time

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "tests", "view"))
from client import Server  # noqa: E402

FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync"]
SIDE = 768
# Turns by a degree with every picture of the screen, as a hand does; counts the pictures that arrive.
DRAG = """
const done = arguments[1], begin = performance.now();
let pictures = 0;
const old = main_view.write_over;
main_view.write_over = function (head, full, took) { pictures += !full; old.call(this, head, full, took); };
const kQuality = main_view.quality;
if (arguments[0]) main_view.quality = () => [1, 1];
(function turn() {
  if (performance.now() - begin < 3000) { main_view.turn(1, 0); return requestAnimationFrame(turn); }
  const rate = pictures / 3;
  main_view.write_over = old;
  main_view.quality = kQuality;
  const scale = main_view.picture.width / main_view.canvas.width;
  (function wait() {
    if (!main_view.full) return setTimeout(wait, 5);
    done([rate, scale, Number(main_view.section.dataset.took)]);
  })();
})();
"""


def driver_in(profile):
    options = Options()
    options.binary_location = "/usr/bin/chromium"
    for flag in [*FLAGS, f"--user-data-dir={profile}", "--window-size=1400,1000"]:
        options.add_argument(flag)
    driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    driver.set_script_timeout(120)
    return driver


def main():
    print("| volume | while dragging | pictures/s | of the full size | ms from the last move to the full picture |")
    print("|---|---|---:|---:|---:|")
    with tempfile.TemporaryDirectory() as profile:
        driver = driver_in(profile)
        for path in sys.argv[2:]:
            with Server(sys.argv[1], path) as server:
                driver.get(server.address)
                WebDriverWait(driver, 60).until(lambda _: driver.execute_script("return main_view.full"))
                driver.execute_script(
                    "main_view.section.style.cssText = `width: ${arguments[0]}px; height: ${arguments[0]}px`", SIDE)
                time.sleep(1)
                for full in (True, False):
                    runs = [driver.execute_async_script(DRAG, full) for _ in range(5)]
                    rate, scale, rest = (statistics.median(column) for column in zip(*runs))
                    name = "full size and step" if full else "adapted"
                    print(f"| {os.path.basename(path)} | {name} | {rate:.0f} | {scale:.2f} | {rest:.0f} |")
        driver.quit()


main()
