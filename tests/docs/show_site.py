#!/usr/bin/python3
"""Shows every page of the site in Chromium. usage: tests/docs/show_site.py HTML-FOLDER PICTURES-FOLDER

Makes pictures of the whole of each page in two widths, dark ones of some, and tries the search. It fails for a script or a
file that fails, for a page that is wider than its window, and for a search without a result. Selenium is that of Debian.
"""
import pathlib
import sys

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

WIDTHS = (1280, 420)
HEIGHT = 900
# What is higher is in several pictures: Chromium draws no more at once.
HIGHEST = 12000
# What is beside the text above and below it.
FRAME = 250
# Beside all pages, what the reference is made of.
REFERENCE = (
    "annotated.html",
    "files.html",
    "namespacemembers.html",
    "classvorlund_1_1CFrameReader.html",
    "RefPtr_8h.html",
    "classvorlund_1_1CEvent.html",
    "stream_8h.html",
    "decode_8h.html",
    "tree/CMakeLists.txt.html",
)
# Code, tables, pictures and plots, in a window with dark colours.
DARK = ("index.html", "page_gallery.html", "page_performance.html", "classvorlund_1_1CFrameReader.html")
LIMIT = 60
# The box that moves, or the whole window.
BOX = "(document.getElementById('doc-content') ?? document.documentElement)"


def start():
    options = Options()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--allow-file-access-from-files"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def set_size(browser, width, height=HEIGHT):
    metrics = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 768}
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)


def open_page(browser, file):
    """Opens a page and returns what went wrong."""
    browser.get(file.as_uri())
    WebDriverWait(browser, LIMIT).until(lambda it: it.execute_script("return document.readyState") == "complete")
    faults = [entry["message"] for entry in browser.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]
    for box in ("document.documentElement", "(document.getElementById('doc-content') ?? document.body)"):
        width, room = browser.execute_script(f"return [{box}.scrollWidth, {box}.clientWidth]")
        if width > room:
            faults.append(f"{width} pixels wide in {room}")
    return faults


def take(browser, width, picture):
    """Pictures of a page from its beginning to its end."""
    set_size(browser, width, min(browser.execute_script(f"return {BOX}.scrollHeight") + FRAME, HIGHEST))
    # Until the scripts of the page have followed.
    browser.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")
    end = 0
    number = 0
    while True:
        move = f"{BOX}.scrollTop = {end}; return [{BOX}.scrollTop, {BOX}.clientHeight, {BOX}.scrollHeight]"
        top, room, height = browser.execute_script(move)
        browser.save_screenshot(str(picture.with_stem(f"{picture.stem}-{number}") if number else picture))
        # A box that does not move is whole.
        if top < end or top + room >= height:
            break
        end = top + room
        number += 1
    set_size(browser, width)


def search(browser, site, text):
    browser.get((site / "index.html").as_uri())
    browser.execute_script("document.getElementById('MSearchField').focus()")
    browser.find_element(By.ID, "MSearchField").send_keys(text)

    def results(it):
        it.switch_to.default_content()
        it.switch_to.frame(it.find_element(By.ID, "MSearchResults"))
        return [row.text for row in it.find_elements(By.CSS_SELECTOR, ".SRResult .SRSymbol") if row.is_displayed()]

    return WebDriverWait(browser, LIMIT).until(results)


def main():
    site, pictures = (pathlib.Path(name).resolve() for name in sys.argv[1:3])
    pictures.mkdir(parents=True, exist_ok=True)
    for old in pictures.glob("*.png"):
        old.unlink()
    made = [file.name for kind in ("page", "chapter") for file in site.glob(f"{kind}_*.html")]
    names = sorted(name for name in made if not name.endswith("_8md.html"))
    faults = 0
    taken = 0
    browser = start()
    try:
        for width in WIDTHS:
            set_size(browser, width)
            for name in ("index.html", *names, *REFERENCE):
                for fault in open_page(browser, site / name):
                    print(f"{name} at {width}: {fault}")
                    faults += 1
                take(browser, width, pictures / f"{pathlib.Path(name).stem}-{width}.png")
                taken += 1
            dark = [{"name": "prefers-color-scheme", "value": "dark"}]
            browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": dark})
            for name in DARK:
                open_page(browser, site / name)
                take(browser, width, pictures / f"{pathlib.Path(name).stem}-dark-{width}.png")
            browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})
        set_size(browser, WIDTHS[0])
        found = search(browser, site, "CFrameReader")
        browser.save_screenshot(str(pictures / "search.png"))
        print(f"the search finds {found[0]!r}")
    finally:
        browser.quit()
    print(f"pictures of {taken} pages in {pictures}, {faults} faults")
    return 1 if faults or not names else 0


sys.exit(main())
