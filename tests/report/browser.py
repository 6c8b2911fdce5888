# SPDX-License-Identifier: MIT
"""A headless Chromium that loads one page from disk, and what a test asks of it."""
import contextlib
import json
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service

FLAGS = (
    "--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
    "--disable-component-update --disable-sync --allow-file-access-from-files"
).split()


class Page:
    """A loaded page. Scripts are bodies of functions; `frame` waits until what was changed is drawn."""

    def __init__(self, driver):
        self.driver = driver

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def frame(self, milliseconds=0):
        self.driver.execute_async_script(
            "const done = arguments[1]; setTimeout(() => requestAnimationFrame(() => requestAnimationFrame(() => done())),"
            " arguments[0]);", milliseconds)

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0]).textContent", selector)

    def texts(self, selector):
        return self.run("return [...document.querySelectorAll(arguments[0])].map((one) => one.textContent)", selector)

    def slide(self, position, stage="#geography-0"):
        """Moves the time slider as a hand does; a negative position counts from the end."""
        self.run(
            "const range = document.querySelector(arguments[0] + ' input[type=range]');"
            "range.value = arguments[1] < 0 ? Number(range.max) + 1 + arguments[1] : arguments[1];"
            "range.dispatchEvent(new Event('input', {bubbles: true}));", stage, position)
        self.frame(150)

    def drag(self, selector, start, end):
        """Presses, moves and lets go; places are parts of the element's box."""
        self.run("document.querySelector(arguments[0]).scrollIntoView({block: 'center', behavior: 'instant'})", selector)
        box = self.run("const b = document.querySelector(arguments[0]).getBoundingClientRect();"
                       "return [b.x, b.y, b.width, b.height]", selector)
        place = lambda part: {"x": box[0] + part[0] * box[2], "y": box[1] + part[1] * box[3]}
        middle = [(start[0] + end[0]) / 2, (start[1] + end[1]) / 2]
        for kind, part, buttons in (("mouseMoved", start, 0), ("mousePressed", start, 1), ("mouseMoved", middle, 1),
                                    ("mouseMoved", end, 1), ("mouseReleased", end, 0)):
            self.driver.execute_cdp_cmd("Input.dispatchMouseEvent", {
                "type": kind, **place(part), "button": "none" if kind == "mouseMoved" and not buttons else "left",
                "buttons": buttons, "clickCount": 0 if kind == "mouseMoved" else 1})
        self.frame(300)  # the sentence that says what is chosen waits a little

    def complaints(self):
        """What the console says that is worse than a note."""
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]

    def requests(self):
        """Addresses that the page asked for, beyond itself."""
        asked = []
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                asked.append(message["params"]["request"]["url"])
        first = asked.index(self.driver.current_url)  # before it, the browser opens a page of its own
        return [url for url in asked[first + 1:] if not url.startswith("data:")]


@contextlib.contextmanager
def opened(path, width=1280, height=900, emulate=None, scripts=True):
    """The page at `path` in a fresh browser. `emulate`: media features, such as a colour scheme."""
    with tempfile.TemporaryDirectory() as profile:
        options = Options()
        for flag in (*FLAGS, f"--user-data-dir={profile}", f"--window-size={width},{height}"):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        try:
            driver.set_script_timeout(120)
            driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                   {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
            if emulate:
                driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
                    {"name": name, "value": value} for name, value in emulate.items()]})
            if not scripts:
                driver.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
            driver.get(f"file://{path}")
            page = Page(driver)
            if scripts:
                page.frame(400)
            yield page
        finally:
            driver.quit()
