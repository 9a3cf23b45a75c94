#!/usr/bin/env python3
"""Looks at pages of orva-host report in a real browser: check_page.py ORVA_HOST ORVA_SAMPLES LOG [PICTURE]

Exits with 77, for "skipped", where there is no Chromium or no python3-selenium. With PICTURE, only writes a picture of
the page of LOG to that file: this makes docs/report.png.
"""

import base64
import hashlib
import json
import pathlib
import subprocess
import sys
import unittest

import pagebrowser
from pagebrowser import FOLDER
from selenium.webdriver import ActionChains, Keys
from selenium.webdriver.support.wait import WebDriverWait

HOST, SAMPLES, LOG, *PICTURE = sys.argv[1:]


def make_page(name, logs, *options):
    return pagebrowser.make_page(HOST, name, logs, *options)


class Lap:
    """A lap as orva-host prints it, to be read at any place."""

    def __init__(self, index, channels):
        result = subprocess.run([HOST, "values", "-q", "--json", "--lap", str(index), "--channels", ",".join(channels),
                                 LOG], check=True, capture_output=True)
        lap = json.loads(result.stdout)["laps"][0]
        self.time_ms = lap["lapTimeMs"]
        self.values = {channel["name"]: channel["values"] for channel in lap["channels"]}
        self.places = self.values["lapdistpct"]

    def near(self, channel, place):
        """The samples before and after a place, and what lies between them."""
        values = self.values[channel]
        after = next((i for i, there in enumerate(self.places) if there > place), len(values))
        if after in (0, len(values)):
            held = values[min(after, len(values) - 1)]
            return held, held
        share = (place - self.places[after - 1]) / (self.places[after] - self.places[after - 1])
        return values[after - 1], values[after - 1] + (values[after] - values[after - 1]) * share


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = pagebrowser.open_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def visit(self, page):
        for log in ("browser", "performance"):
            self.browser.get_log(log)
        self.browser.get(page.as_uri())

    def script(self, text, *arguments):
        return self.browser.execute_script("return " + text, *arguments)

    def drawings(self):
        """What each chart looks like, as a digest."""
        urls = self.script("[...document.querySelectorAll('.plot canvas:first-of-type')].map(c => c.toDataURL())")
        return [hashlib.sha256(url.encode()).hexdigest() for url in urls]

    def wait_until(self, holds, message):
        """For what the browser does with its next frame, after its answer to the command that asked for it."""
        WebDriverWait(self.browser, 20, 0.05).until(lambda _: holds(), message)

    def plots(self):
        return self.browser.find_elements("css selector", ".plot")

    def point(self, x, plot=0):
        """Moves the mouse to a place in a chart and returns which row of the grid is read there."""
        element = self.plots()[plot]
        offset = round(x - element.size["width"] / 2)
        ActionChains(self.browser, duration=0).move_to_element_with_offset(element, offset, 0).perform()
        return int(self.script("document.getElementById('charts').dataset.row"))

    def read(self, chart):
        """What a chart's list says: a number per lap."""
        texts = self.script("[...document.querySelectorAll('.values')[arguments[0]].querySelectorAll('output')]"
                            ".map(o => o.textContent)", chart)
        return [float(text.replace("−", "-")) for text in texts]

    def check_quiet(self, page):
        """Nothing on the console, and nothing asked for but the page."""
        self.assertEqual(self.browser.get_log("browser"), [])
        messages = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        urls = {message["params"]["request"]["url"] for message in messages
                if message["method"] == "Network.requestWillBeSent"}
        self.assertEqual(urls, {page.as_uri()})

    def test_charts(self):
        page = make_page("club.html", [LOG])
        self.visit(page)
        names = self.script("[...document.querySelectorAll('figcaption b')].map(b => b.textContent)")
        self.assertEqual(names, ["Speed", "Time difference", "Throttle", "Brake", "Gear", "Steering"])

        before = self.drawings()
        boxes = self.browser.find_elements("css selector", "#laps input")
        self.assertEqual([box.is_selected() for box in boxes], [False, True, True, True, False])
        boxes[4].click()
        after = self.drawings()
        for old, new in zip(before, after):
            self.assertNotEqual(old, new)
        self.assertEqual(len(self.read_names()), 4)
        boxes[4].click()
        self.assertEqual(self.drawings(), before)
        self.browser.find_element("css selector", "[data-tick=none]").click()
        self.assertEqual(self.read_names(), [])
        self.browser.find_element("css selector", "[data-tick=finished]").click()
        self.assertEqual(self.drawings(), before)
        self.check_quiet(page)

        # Not before now, as the browser remarks on it: each chart shows the ticked laps in their colours. The last to be
        # drawn may cover the others, but not where they differ in time.
        seen = self.script("""(() => [...document.querySelectorAll('.plot canvas:first-of-type')].map(canvas => {
            const {data} = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
            const colours = new Set();
            for (let i = 0; i < data.length; i += 4)
                if (data[i + 3] > 250) colours.add([data[i], data[i + 1], data[i + 2]].join());
            return [...document.querySelectorAll('.tall .values i')].filter(mark =>
                colours.has(getComputedStyle(mark).borderTopColor.match(/[0-9]+/g).join())).length;
        }))()""")
        self.assertEqual(len(seen), 6)
        self.assertGreaterEqual(min(seen), 1)
        self.assertEqual(seen[1], 3)

    def read_names(self):
        return self.script("[...document.querySelectorAll('.values')[0].querySelectorAll('span')].map(s => s.textContent)")

    def test_cursor(self):
        self.visit(make_page("club.html", [LOG]))
        points = self.script("JSON.parse(document.getElementById('data').textContent).points")
        channels = {0: "groundspeed", 2: "throttlepos", 3: "brakepos", 4: "gear", 5: "steeringangle"}
        laps = [Lap(index, ["lapdistpct", *channels.values()]) for index in (1, 2, 3)]
        digits = {0: 1, 2: 1, 3: 1, 4: 0, 5: 0}
        for x in (60, 333, 511, 700):
            row = self.point(x, plot=2)
            place = row / (points - 1)
            for chart, channel in channels.items():
                for lap, read in zip(laps, self.read(chart)):
                    before, between = lap.near(channel, place)
                    expected = before if channel == "gear" else between
                    self.assertAlmostEqual(read, expected, delta=0.5001 * 10**-digits[chart],
                                           msg=f"{channel} at {place}")
        ends = self.point(self.plots()[0].size["width"] - 9)
        self.assertEqual(ends, points - 1)
        self.assertEqual([round(1000 * value) for value in self.read(1)],
                         [lap.time_ms - laps[0].time_ms for lap in laps])
        self.browser.find_element("id", "charts").send_keys(Keys.ARROW_LEFT)
        self.assertEqual(self.script("document.getElementById('charts').dataset.row"), str(points - 2))

    def test_zoom(self):
        page = make_page("club.html", [LOG])
        self.visit(page)
        whole = self.drawings()
        plot = self.plots()[0]
        ActionChains(self.browser, duration=50).move_to_element(plot).click_and_hold() \
            .move_by_offset(150, 0).release().perform()
        for old, new in zip(whole, self.drawings()):
            self.assertNotEqual(old, new)
        first, last = self.point(50), self.point(plot.size["width"] - 11)
        self.assertLess(last - first, 400)
        ActionChains(self.browser).move_to_element(plot).double_click().perform()
        self.assertEqual(self.drawings(), whole)
        self.check_quiet(page)

    def test_two_logs(self):
        other = FOLDER / "other.csv"
        subprocess.run([SAMPLES, other, "--track", "kart", "--seed", "7", "--columns", "15", "--laps", "2"], check=True)
        page = make_page("two.html", [LOG, other], "--title", "Two <drivers>")
        self.visit(page)
        self.assertEqual(self.browser.title, "Two <drivers>")
        self.assertEqual([name[0] for name in self.read_names()], ["A", "B"])
        self.check_quiet(page)

    def test_hostile_texts(self):
        text = pathlib.Path(LOG).read_text(encoding="utf-8")
        text = text.replace("Mill Lane", "</title><script>alert(1)</script>{{data}}").replace("R. Lindqvist", "--><b>&amp;'")
        text = text.replace("Throttle Pos", "</script><b>").replace(",rpm,", ",<!--<script>,")
        log = FOLDER / "hostile.csv"
        log.write_text(text, encoding="utf-8")
        page = make_page("hostile.html", [log], "--traces", "</script><b>,enginerpm")
        self.visit(page)
        self.assertEqual(self.browser.title, "</title><script>alert(1)</script>{{data}} Karting · --><b>&amp;'")
        self.assertEqual(self.script("document.scripts.length"), 4)
        self.assertEqual(self.script("[...document.querySelectorAll('figcaption')].map(f => f.children[0].textContent)"),
                         ["</script><b>", "Time difference", "enginerpm"])
        self.check_quiet(page)

    def test_dark_paper_and_without_script(self):
        page = make_page("club.html", [LOG])
        media = {"features": [{"name": "prefers-color-scheme", "value": "dark"}]}
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", media)
        self.visit(page)
        dark = self.drawings()
        printed = base64.b64decode(self.browser.execute_cdp_cmd("Page.printToPDF", {})["data"])
        self.wait_until(lambda: self.drawings() == dark, "drawn as before printing")
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})
        self.wait_until(lambda: not set(self.drawings()) & set(dark), "every chart drawn anew in light colours")
        self.assertGreaterEqual(printed.count(b"/Subtype /Image"), 6)
        self.check_quiet(page)

        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
        self.visit(page)
        text = self.browser.find_element("tag name", "body").text
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": False})
        for part in ("need JavaScript", "0:11.386", "RideHeightFront"):
            self.assertIn(part, text)

    def test_size(self):
        page = make_page("long.html", [pagebrowser.make_long_log(SAMPLES)])
        self.assertLess(page.stat().st_size, 1_500_000)
        self.visit(page)
        self.browser.find_element("css selector", "[data-tick=finished]").click()
        self.assertEqual(len(self.read_names()), 20)
        self.check_quiet(page)


def take_picture(path):
    browser = pagebrowser.open_browser(820)
    browser.get(make_page("club.html", [LOG]).as_uri())
    plot = browser.find_element("css selector", ".plot")
    ActionChains(browser).move_to_element_with_offset(plot, 60, 0).perform()
    picture = browser.execute_cdp_cmd("Page.captureScreenshot", {"format": "png", "optimizeForSpeed": False})
    pathlib.Path(path).write_bytes(base64.b64decode(picture["data"]))
    browser.quit()


if PICTURE:
    take_picture(PICTURE[0])
else:
    unittest.main(argv=sys.argv[:1], verbosity=2)
