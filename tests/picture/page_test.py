"""Opens pictures in Chromium and looks at them as a reader does.

Usage: page_test.py DAY SUMMARY HOSTILE CROWDED
DAY is the picture of examples/one_day.jsonl, SUMMARY the file with what the tool prints of it with
--summary, HOSTILE the picture of hostile.jsonl, and CROWDED that of 70 sensors of which one is enabled in
each of 9000 seconds.
"""

import json
import re
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

# In the day's picture: a lane, a class in it, and the minutes at which the first begins and the last ends.
DRAWN = [
    ("gyroscope", "enabled", 480, 1050),
    ("gyroscope", "rate", 480, 1050),
    ("gyroscope", "band-0", 900, 960),
    ("gyroscope", "band-1", 480, 570),
    ("gyroscope", "band-3", 960, 1050),
    ("gyroscope", "late", 960, 1050),
    ("magnetometer", "band-2", 480, 570),
    ("steps", "band-4", 1080, 1140),
    ("Reporter thread", "thread-asleep", 0.2, 1440),
    ("Device", "asleep", 72, 410),
]

# A lane, a class of marks in it, and the minutes of the first and the last.
MARKS = [
    ("magnetometer", "first", 480, 480),
    ("magnetometer", "disable", 570, 570),
    ("barometer", "first", 0, 410),
    ("Notes", "note", 0, None),
    ("Atoms failed", "failed", 660, 660),
    ("Atoms dropped", "dropped", 782, 782),
    ("Reporter thread", "step", None, 1418),
]

CYCLE_ENDS = [698, 1058, 1418]

LEGEND = ["absent", "asleep", "thread-asleep", "cycle", "enabled", "mark first", "mark disable", "rate",
          "band-0", "band-1", "band-2", "band-3", "band-4", "late"]

# Texts and what is drawn, and how much they must differ from what is behind them.
CONTRASTS = [
    ("body, #title, #counts dd, #chart text, tbody td, tbody th, button:enabled, input, select", 4.5),
    ("#subtitle, .quiet, .legend, thead th, #counts dt, #chart text.quiet, .axis text, .share, #atoms td button", 4.5),
    ("#atoms td.failed, #atoms td.dropped, #atoms td.blocked, .mark > text, .wrong dd:first-of-type", 4.5),
    ("#chart .rate, #chart .enabled, #chart .late, #chart .asleep:not(.shade), .mark path, .mark rect", 3),
]


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

    def open(self, page, width=1280, scheme="light", media="screen"):
        self.command("Emulation.setDeviceMetricsOverride",
                     width=width, height=1400, deviceScaleFactor=1, mobile=False)
        self.command("Emulation.setEmulatedMedia", media=media,
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

    def click(self, selector):
        self.find(selector).click()
        self.settle()

    def turn_wheel(self, modifiers):
        """Towards the reader, in the middle of the picture."""
        _, left, top, right, bottom = self.boxes("#chart svg")[0]
        self.command("Input.dispatchMouseEvent", type="mouseWheel", x=(left + right) / 2, y=(top + bottom) / 2,
                     deltaX=0, deltaY=-200, modifiers=modifiers)
        self.settle()

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

    def window(self):
        """The first and last minute that the picture shows."""
        shown = re.match(r"(\d+):(\d+):([\d.]+) to (\d+):(\d+):([\d.]+),", self.find("#window").text)
        if not shown:
            return (0, 1440)
        hour, minute, second, *last = [float(part) for part in shown.groups()]
        return (hour * 60 + minute + second / 60, last[0] * 60 + last[1] + last[2] / 60)

    def assert_window(self, begin, end):
        shown = self.window()
        self.assertAlmostEqual(shown[0], begin, delta=1)
        self.assertAlmostEqual(shown[1], end, delta=1)

    def least_contrast(self, selector):
        """Of the elements, by the definition of the Web Content Accessibility Guidelines."""
        return self.browser.execute_script("""
            const channels = colour => colour.match(/[\\d.]+/g).map(Number);
            const luminance = colour => channels(colour).slice(0, 3).map(c => c / 255)
              .map(c => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
              .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
            const behind = element => {
              if (element.matches(".mark > text")) return getComputedStyle(element.parentNode.querySelector("rect")).fill;
              for (let at = element; at; at = at.parentElement) {
                const colour = getComputedStyle(at).backgroundColor;
                if (channels(colour)[3] !== 0) return colour;
              }
              return "rgb(255, 255, 255)";
            };
            const contrasts = [...document.querySelectorAll(arguments[0])].map(element => {
              const style = getComputedStyle(element);
              const own = element instanceof SVGElement ? style.fill : style.color;
              const [low, high] = [luminance(own), luminance(behind(element))].sort((a, b) => a - b);
              return (high + 0.05) / (low + 0.05);
            });
            return Math.min(...contrasts);""", selector)

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

    def test_draws_everything_where_it_was(self):
        self.open(DAY)
        for lane, kind, begin, end in DRAWN:
            with self.subTest(lane=lane, kind=kind):
                boxes = self.boxes(f'[aria-label^="{lane}"] .{kind}')
                self.assertAlmostEqual(min(box[1] for box in boxes), self.x_of(begin), delta=1)
                self.assertAlmostEqual(max(box[3] for box in boxes), self.x_of(end), delta=1)
        for lane, kind, first, last in MARKS:
            with self.subTest(lane=lane, kind=kind):
                places = [(left + right) / 2 for _, left, _, right, _ in self.boxes(f'[aria-label^="{lane}"] .mark.{kind}')]
                for at, place in [(first, min(places)), (last, max(places))]:
                    if at is not None:
                        self.assertAlmostEqual(place, self.x_of(at), delta=2)
        ends = [(left + right) / 2 for _, left, _, right, _ in self.boxes("line.cycle")]
        self.assertEqual(len(ends), len(CYCLE_ENDS))
        for place, at in zip(ends, CYCLE_ENDS):
            self.assertAlmostEqual(place, self.x_of(at), delta=1)
        legend = [part.get_attribute("class") for part in self.find_all("#legend path")]
        self.assertEqual(legend, LEGEND)
        self.assertTrue(all(item.text for item in self.find_all("#legend li")))
        self.assertIn("peak 24,000/min", [text for text, *_ in self.boxes('[aria-label^="gyroscope"] text.quiet')])

    def test_has_the_numbers_of_the_tools_summary(self):
        self.open(DAY)
        with open(SUMMARY, encoding="utf-8") as file:
            *sensors, counts = file.read().split("\n\n")[1:]
        expected = [re.match(r"(.*?\S) +(\d+)", line).groups() for line in counts.splitlines()]
        tiles = [tile.text.split("\n") for tile in self.find_all("#counts div")]
        self.assertEqual([(name, number.replace(",", "")) for name, number, *_ in tiles], expected)
        rows = [row.text.replace(",", "") for row in self.find_all("#sensors tbody tr")]
        self.assertEqual(len(rows), len(sensors))
        for row, sensor in zip(rows, sensors):
            name, samples, late = re.match(r"(.*): (\d+) samples, (\d+) late", sensor).groups()
            not_reported = re.search(r"(\d+) not reported", sensor).group(1)
            bands = [line for line in sensor.splitlines() if " ms |" in line]
            shares = [number for band in bands for number in re.findall(r" ([1-9]\d*)(?: +(\S+ %))?$", band)]
            self.assertEqual(row.split(), " ".join([name, samples, not_reported, late, *sum(shares, ())]).split())

    def test_moves_and_zooms(self):
        self.open(DAY)
        self.turn_wheel(modifiers=0)
        self.assert_window(0, 1440)
        self.turn_wheel(modifiers=2)
        begin, end = self.window()
        self.assertTrue(begin > 60 and end < 1380, (begin, end))
        by = self.x_of(begin + 60) - self.x_of(begin)
        ActionChains(self.browser).click_and_hold(self.find("#chart svg")).move_by_offset(-round(by), 0).release().perform()
        self.settle()
        self.assert_window(begin + 60, end + 60)
        for button, begin, end in [("all", 0, 1440), ("in", 360, 1080), ("in", 540, 900)]:
            self.click("#zoom-" + button)
            self.assert_window(begin, end)
        for button, begin, end in [("earlier", 360, 720), ("later", 540, 900), ("zoom-out", 360, 1080)]:
            self.click("#" + button)
            self.assert_window(begin, end)
        self.press(Keys.SHIFT + Keys.ARROW_RIGHT)
        self.assert_window(540, 1260)

    def test_says_what_is_under_the_pointer(self):
        self.open(DAY)
        self.assertEqual(self.point_at(self.find(".mark.dropped")), [
            "13:02:00", "dropped: SensorRuntimeErrorDetected", "accelerometer (16/1) type=1 code=7 (lookup failed)",
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
        for chosen, most in [("failed", 1), ("dropped", 1), ("blocked", 12)]:
            self.find(f'#outcome option[value="{chosen}"]').click()
            self.settle()
            outcomes = {cell.text for cell in self.find_all("#atoms tbody td:nth-child(2)")}
            self.assertEqual(outcomes, {chosen})
            self.assertTrue(self.find("#shown").text.startswith(f"{most} of "), self.find("#shown").text)
        self.find('#outcome option[value=""]').click()
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
            for selector, least in CONTRASTS:
                with self.subTest(scheme=scheme, selector=selector):
                    self.assertGreaterEqual(self.least_contrast(selector), least)
        self.assertEqual(len(set(colours)), 2)

    def test_prints_all_that_the_window_shows(self):
        self.open(DAY, 400, "dark", "print")
        self.browser.execute_script("dispatchEvent(new Event('beforeprint'))")
        self.settle()
        self.assertEqual(self.find("#chart svg").get_dom_attribute("viewBox").split()[2], "880")
        self.assertGreater(self.least_contrast("body, #title, #counts dd, #chart text, tbody td"), 4.5)
        for selector in [".buttons", ".filters", ".keys", "#more", "footer"]:
            self.assertFalse(self.find(selector).is_displayed(), selector)
        for selector in ["#chart svg", "#atoms tbody tr", "#sensors thead", "#counts"]:
            self.assertTrue(self.find(selector).is_displayed(), selector)
        self.assertEqual(self.find("#chart").value_of_css_property("print-color-adjust"), "exact")
        self.browser.execute_script("dispatchEvent(new Event('afterprint'))")
        self.settle()
        self.assertLess(float(self.find("#chart svg").get_dom_attribute("viewBox").split()[2]), 400)

    def test_shows_a_crowded_run_to_its_end(self):
        self.open(CROWDED)
        self.find("#limits summary").click()
        limits = self.find("#limits ul").text.split("\n")
        self.assertRegex(limits[0], r"^9,000 delivered atoms are shown as [2-6],\d\d\d: neighbours are one\.$")
        self.assertEqual(limits[-1], "First 64 sensors shown; 6 more are left out.")
        self.assertRegex(self.find("#shown").text, r"^9,000 of 9,000")
        marks = self.boxes('[aria-label^="Atoms delivered"] .mark.delivered')
        spans = self.boxes('[aria-label^="sensor 7/1"] .enabled')
        self.assertGreater(marks[-1][3], self.x_of(145))
        self.assertGreater(max(box[3] for box in spans), self.x_of(149))
        row = self.search("02:29:")[-1]
        self.assertRegex(row, r"HalSensorStateChanged \(\d times\) neighbours shown as one, the last at 02:30:00 sensor_enabled$")
        self.open(DAY)
        self.assertFalse(self.find("#limits").is_displayed())

    def test_shows_texts_as_they_are(self):
        self.open(HOSTILE)
        self.assertEqual(self.press(*[Keys.ARROW_DOWN] * 4),
                         ["Notes", "00:00:01", '</script><img src=x onerror="hacked=1">'])
        self.assertEqual(self.find("#sensors tbody th").text, '<img src=x onerror="hacked=1"> (1/1)')
        self.assertIn('domain="<!--<script>" value_1="<svg onload=hacked=1>&amp;"', self.search("onload")[0])
        self.assertEqual(self.find_all("img"), [])
        self.assertIsNone(self.browser.execute_script("return window.hacked"))


if __name__ == "__main__":
    DAY, SUMMARY, HOSTILE, CROWDED = sys.argv[1:5]
    unittest.main(argv=sys.argv[:1])
