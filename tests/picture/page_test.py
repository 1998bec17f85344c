"""Opens pictures in Chromium and looks at them as a reader does.

Usage: page_test.py DAY HOSTILE
DAY is the picture of examples/one_day.jsonl, HOSTILE that of hostile.jsonl.
"""

import json
import sys
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync"]


def start_browser():
    options = Options()
    options.binary_location = "/usr/bin/chromium"
    for flag in FLAGS:
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = start_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [])

    # What a reader does.

    def open(self, page, width=1280, scheme="light"):
        self.command("Emulation.setDeviceMetricsOverride",
                     width=width, height=1400, deviceScaleFactor=1, mobile=False)
        self.command("Emulation.setEmulatedMedia",
                     features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.browser.get("file://" + page)
        self.settle()

    def command(self, name, **parameters):
        return self.browser.execute_cdp_cmd(name, parameters)

    def settle(self):
        """Waits until the browser has drawn what it was asked for."""
        self.browser.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")

    def press(self, *keys):
        self.find("#chart svg").send_keys(*keys)
        self.settle()
        return self.find("#readout").text.split("\n")

    def point_at(self, element, x=0, y=0):
        """Moves the pointer to a place, counted from the middle of the element."""
        ActionChains(self.browser).move_to_element_with_offset(element, round(x), round(y)).perform()
        return self.find("#readout").text.split("\n")

    def search(self, text):
        box = self.find("#search")
        box.send_keys(Keys.CONTROL, "a")
        box.send_keys(Keys.DELETE, text)
        self.settle()
        return [row.text for row in self.find_all("#atoms tbody tr")]

    # What a reader sees.

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def find_all(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def boxes(self, selector):
        """The text and the left, top, right and bottom edge of each element."""
        return self.browser.execute_script(
            "return [...document.querySelectorAll(arguments[0])].map(element => {"
            "  const box = element.getBoundingClientRect();"
            "  return [element.textContent, box.left, box.top, box.right, box.bottom];"
            "})", selector)

    def x_of(self, minutes):
        """Where an instant is, by the first and last tick of the axis."""
        ticks = [(int(text[:2]) * 60 + int(text[3:5]), (left + right) / 2)
                 for text, left, _, right, _ in self.boxes("#chart .axis:last-of-type text")]
        (first, first_x), (last, last_x) = ticks[0], ticks[-1]
        return first_x + (minutes - first) * (last_x - first_x) / (last - first)

    def assert_covers(self, selector, begin, end):
        _, left, _, right, _ = self.boxes(selector)[-1]
        self.assertAlmostEqual(left, self.x_of(begin), delta=1)
        self.assertAlmostEqual(right, self.x_of(end), delta=1)

    # The tests.

    def test_fetches_nothing(self):
        self.browser.get_log("performance")
        self.open(DAY)
        events = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        fetched = [event["params"]["request"]["url"] for event in events
                   if event["method"] == "Network.requestWillBeSent"]
        self.assertEqual([url for url in fetched if url != "data:,"], ["file://" + DAY])
        policy = self.find("meta[http-equiv=Content-Security-Policy]").get_attribute("content")
        self.assertTrue(policy.startswith("default-src 'none'; ") and "unsafe" not in policy, policy)

    def test_shows_the_night_and_the_outage_where_they_were(self):
        self.open(DAY)
        for lane in ["rect.asleep:not(.shade)", "rect.shade.asleep"]:
            self.assert_covers(lane, 72, 410)
        self.search("runtime_error 13:00:20")
        self.find("#atoms tbody button").click()
        self.settle()
        for lane in ["rect.absent:not(.shade)", "rect.shade.absent"]:
            self.assert_covers(lane, 13 * 60, 13 * 60 + 4)

    def test_says_what_is_under_the_pointer(self):
        self.open(DAY)
        self.assertEqual(self.point_at(self.find(".mark.dropped")), [
            "13:02:00", "dropped: atom", "accelerometer (16/1) type=1 code=7",
            "queued by runtime_error at 13:00:20, line 65"])
        self.assertEqual(self.point_at(self.find("rect.asleep:not(.shade)")),
                         ["01:12:00 to 06:50:00", "device asleep for 5 h 38 min"])
        chart = self.find("#chart svg")
        _, left, top, right, bottom = self.boxes("#chart svg")[0]
        _, _, band_top, _, band_bottom = self.boxes("#chart .band-1")[0]
        lines = self.point_at(chart, self.x_of(12 * 60 + 20) - (left + right) / 2,
                              (band_top + band_bottom) / 2 - (top + bottom) / 2)
        self.assertRegex(lines[0], r"^accelerometer \(16/1\), 12:\d\d:00 to 12:\d\d:00$")
        self.assertEqual(lines[1:3], ["6,000 samples, 6,000 a minute", "up to 5 ms: 6,000 (100.0 %)"])
        self.find("#zoom-in").send_keys(Keys.ENTER)
        self.settle()
        self.assertFalse(self.find("#readout").is_displayed())

    def test_says_what_the_keyboard_chooses(self):
        self.open(DAY)
        failed = ["Atoms failed", "11:00:00", "failed: SensorHalLatencyRecorded",
                  "accelerometer (16/1) operation=1 latency_ns=2750000",
                  "queued by hal_latency at 11:00:00, line 54"]
        self.assertEqual(self.press(*[Keys.ARROW_DOWN] * 6), failed)
        chosen = self.find("#" + self.find("#chart svg").get_attribute("aria-activedescendant"))
        self.assertEqual(chosen.get_attribute("aria-label"), "; ".join(failed[1:]))
        self.assertEqual(self.press(Keys.ARROW_UP, Keys.HOME, Keys.ARROW_RIGHT)[:2],
                         ["Atoms delivered", "12 from 01:10:00 to 01:10:02"])
        single = self.press(Keys.END, Keys.ARROW_LEFT)
        self.assertEqual(single[1], "22:00:00")
        self.assertEqual(self.press("+"), single)
        self.assertIn("12 h", self.find("#window").text)
        self.press("0")
        self.assertEqual(self.find("#window").text, "")

    def test_finds_atoms_and_follows_the_zoom(self):
        self.open(DAY)
        self.assertEqual(len(self.search("magnetometer error_code=-22")), 1)
        self.assertEqual(self.search("no such atom"), [])
        everything = len(self.search(""))
        self.find("#zoom-in").click()
        self.settle()
        rows = [row[:8] for row in self.search("")]
        self.assertLess(len(rows), everything)
        self.assertTrue(rows and all("06:00:00" <= row <= "18:00:00" for row in rows))

    def test_has_a_text_for_every_mark(self):
        self.open(DAY)
        marks = self.find_all("#chart [role=img]")
        self.assertGreater(len(marks), 50)
        self.assertTrue(all(mark.get_attribute("aria-label") for mark in marks))

    def test_reads_at_every_width(self):
        for width in [400, 700, 1280]:
            with self.subTest(width=width):
                self.open(DAY, width)
                page_width = self.browser.execute_script("return document.documentElement.scrollWidth")
                self.assertLessEqual(page_width, width)
                texts = sorted(self.boxes("#chart text"), key=lambda box: box[2])
                for i, (text, left, _, right, bottom) in enumerate(texts):
                    self.assertTrue(left >= 0 and right <= width, text)
                    for other, other_left, other_top, other_right, _ in texts[i + 1:]:
                        overlaps = other_top < bottom - 2 and left < other_right and other_left < right
                        self.assertFalse(overlaps, f"{text} and {other}")

    def test_is_light_or_dark(self):
        colours = []
        for scheme in ["light", "dark"]:
            self.open(DAY, scheme=scheme)
            colours.append(self.find("body").value_of_css_property("background-color"))
        self.assertEqual(len(set(colours)), 2)

    def test_prints_all_that_the_window_shows(self):
        self.open(DAY, 400, "dark")
        self.browser.execute_script("dispatchEvent(new Event('beforeprint'))")
        self.settle()
        self.assertEqual(self.find("#chart svg").get_dom_attribute("viewBox").split()[2], "880")
        self.assertEqual(self.find("body").value_of_css_property("background-color"), "rgba(251, 251, 250, 1)")

    def test_shows_texts_as_they_are(self):
        self.open(HOSTILE)
        self.assertEqual(self.press(*[Keys.ARROW_DOWN] * 4),
                         ["Notes", "00:00:01", '</script><img src=x onerror="hacked=1">'])
        self.assertEqual(self.find("#sensors tbody th").text, '<img src=x onerror="hacked=1"> (1/1)')
        self.assertIn('domain="<!--<script>" value_1="<svg onload=hacked=1>&amp;"', self.search("onload")[0])
        self.assertEqual(self.find_all("img"), [])
        self.assertIsNone(self.browser.execute_script("return window.hacked"))


if __name__ == "__main__":
    DAY, HOSTILE = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])
