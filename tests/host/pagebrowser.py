"""Headless Chromium for pages of orva-host report: used by check_page.py and bench/page.py."""

import pathlib
import shutil
import subprocess
import sys
import tempfile

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
except ImportError:
    print("python3-selenium is not installed")
    sys.exit(77)

CHROMIUM = shutil.which("chromium")
DRIVER = shutil.which("chromedriver")
if not CHROMIUM or not DRIVER:
    print("chromium or chromium-driver is not installed")
    sys.exit(77)

TEMPORARY = tempfile.TemporaryDirectory()
FOLDER = pathlib.Path(TEMPORARY.name)
WIDTH, HEIGHT = 1240, 1300


def make_page(host, name, logs, *options):
    path = FOLDER / name
    subprocess.run([host, "report", "-q", *map(str, logs), "-o", path, "--force", *options], check=True)
    return path


def make_long_log(samples):
    """Twenty laps of 6,000 samples."""
    log = FOLDER / "long.csv"
    subprocess.run([samples, log, "--rate", "146", "--columns", "15", "--laps", "20"], check=True)
    return log


def open_browser(height=HEIGHT):
    options = webdriver.ChromeOptions()
    options.binary_location = CHROMIUM
    for argument in ("headless=new", "no-sandbox", "disable-gpu", "disable-quic", "no-first-run", "hide-scrollbars",
                     "disable-background-networking", "disable-component-update", "disable-sync",
                     f"user-data-dir={FOLDER}/profile"):
        options.add_argument("--" + argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    browser = webdriver.Chrome(service=Service(DRIVER), options=options)
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": WIDTH, "height": height, "deviceScaleFactor": 1, "mobile": False})
    return browser
