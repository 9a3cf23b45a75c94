"""Run by bench/page: page.py ORVA_HOST ORVA_SAMPLES"""

import os
import pathlib
import statistics
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tests/host"))
import pagebrowser
from selenium.webdriver import ActionChains

HOST, SAMPLES = sys.argv[1:]
TURNS = int(os.environ.get("ORVA_BENCH_TURNS", "5"))

# As many lines of as many points as the page's charts have, on canvases of their size. Reading a pixel waits for them.
BARE_LINES = """
    const [points, laps] = arguments;
    for (const plot of document.querySelectorAll('.plot canvas:first-of-type')) {
        const canvas = plot.cloneNode();
        const context = canvas.getContext('2d');
        for (let lap = 0; lap < laps; ++lap) {
            context.beginPath();
            for (let i = 0; i < points; ++i)
                context.lineTo(i * canvas.width / points, canvas.height * (0.5 + 0.4 * Math.sin(0.02 * i + lap)));
            context.stroke();
        }
        context.getImageData(0, 0, 1, 1);
    }
"""


def main():
    page = pagebrowser.make_page(HOST, "long.html", [pagebrowser.make_long_log(SAMPLES)])
    browser = pagebrowser.open_browser()
    browser.execute_cdp_cmd("Performance.enable", {"timeDomain": "threadTicks"})

    def spent(act):
        def now():
            metrics = browser.execute_cdp_cmd("Performance.getMetrics", {})["metrics"]
            return next(metric["value"] for metric in metrics if metric["name"] == "TaskDuration")
        start = now()
        act()
        return now() - start

    def turn():
        browser.get("about:blank")
        drawn = spent(lambda: browser.get(page.as_uri()))
        points, laps = browser.execute_script("""
            const data = JSON.parse(document.getElementById('data').textContent);
            return [data.points, data.laps.length];""")
        ticked = spent(browser.find_element("css selector", "[data-tick=finished]").click)
        plot = browser.find_element("css selector", ".plot")
        mouse = ActionChains(browser, duration=0)
        mouse.move_to_element(plot).click_and_hold().move_by_offset(200, 0).perform()
        zoomed = spent(ActionChains(browser, duration=0).release().perform)
        bare = spent(lambda: browser.execute_script(BARE_LINES, points, laps))
        return {"drawn": drawn, "all laps": ticked, "zoomed": zoomed, "bare lines": bare}

    turns = [turn() for _ in range(TURNS)]
    browser.quit()
    print(f"page of {page.stat().st_size / 1e6:.2f} MB        s    ratio")
    for name in turns[0]:
        seconds = statistics.median(times[name] for times in turns)
        ratio = statistics.median(times[name] / times["bare lines"] for times in turns)
        print(f"{name:18} {seconds:8.3f} {ratio:8.2f}")


main()
