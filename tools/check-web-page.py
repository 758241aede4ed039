#!/usr/bin/env python3
"""Looks at exported web pages in Chromium, and holds what they show against the program's own preview.

    tools/check-web-page.py [--keep FOLDER] [BUILD_BIN]     (default: build/native/bin)

Needs chromium and ImageMagick; says so and ends well when they are missing. Every page is opened from its
folder (file:) and from a server, which are two ways of painting.
--keep leaves pages, screenshots and previews in FOLDER, to be looked at.
"""

import argparse
import base64
import functools
import http.server
import json
import math
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parent.parent
CARD = ROOT / "Media/Examples/Test card.png"
WIDTH, HEIGHT = 1280, 720

# Names a page has to cope with; the first is looked at closely.
NAMES = ["card.png", "100% a&b #1 'q' + ~.png", "Gr\u00fc\u00dfe \u5c71.png", "a [URL] b.png", "&amp;&lt;.png"]

# heading, pitch (positive: down) and angle of view in degrees
VIEWS = [(0, 0, 80), (30, -10, 60), (45, 35.264, 90), (180, 0, 80), (-100, -80, 75), (10, 90, 100), (0, 0, 120)]


class Browser:
    """Chromium, driven through its debugging pipe."""

    def __init__(self, program, profile, *options):
        to_browser, self.out = os.pipe()
        self.incoming, from_browser = os.pipe()

        def give_pipes():
            # The browser reads from 3 and writes to 4; first out of the way of those numbers.
            a, b = os.dup(to_browser), os.dup(from_browser)
            high_a, high_b = os.dup2(a, 100), os.dup2(b, 101)
            os.dup2(high_a, 3)
            os.dup2(high_b, 4)

        self.process = subprocess.Popen(
            [program, "--headless=new", "--no-sandbox", "--use-gl=angle", "--use-angle=swiftshader",
             "--enable-unsafe-swiftshader", "--remote-debugging-pipe", "--no-first-run", "--mute-audio",
             f"--user-data-dir={profile}", f"--window-size={WIDTH},{HEIGHT}", *options, "about:blank"],
            close_fds=False, preexec_fn=give_pipes, stderr=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.buffer = b""
        self.number = 0
        self.session = None
        targets = self.call("Target.getTargets")["targetInfos"]
        page = next(t for t in targets if t["type"] == "page")
        self.session = self.call("Target.attachToTarget", targetId=page["targetId"], flatten=True)["sessionId"]
        self.call("Page.enable")
        self.metrics(1)

    def metrics(self, density, width=WIDTH, height=HEIGHT):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=density,
                  mobile=False)

    def call(self, method, **params):
        self.number += 1
        message = {"id": self.number, "method": method, "params": params}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.out, json.dumps(message).encode() + b"\0")
        while True:
            while b"\0" not in self.buffer:
                chunk = os.read(self.incoming, 1 << 20)
                if not chunk:
                    raise RuntimeError("the browser ended")
                self.buffer += chunk
            text, self.buffer = self.buffer.split(b"\0", 1)
            answer = json.loads(text)
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def value(self, expression):
        return self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                         awaitPromise=True)["result"].get("value")

    def open(self, address):
        """Opens a page and waits until it has painted, or said that it cannot. Gives the painter's name."""
        self.call("Page.navigate", url="about:blank")
        self.call("Page.navigate", url=address)
        for _ in range(600):
            painter = self.value("document.documentElement.dataset.painter ?? ''")
            if painter:
                self.rest()
                return painter
            time.sleep(0.1)
        raise RuntimeError(f"{address}: nothing was painted within a minute")

    def rest(self):
        """Waits for the view as it is painted when nothing moves."""
        self.value("new Promise(done => setTimeout(() => requestAnimationFrame("
                   "() => requestAnimationFrame(done)), 300))")

    def screenshot(self, path):
        self.value("document.getElementById('full-screen').style.visibility = 'hidden', document.activeElement.blur()")
        data = self.call("Page.captureScreenshot", format="png")["data"]
        pathlib.Path(path).write_bytes(base64.b64decode(data))

    def mouse(self, kind, x, y, **more):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def drag(self, x, y, dx, dy):
        self.mouse("mousePressed", x, y, button="left", clickCount=1)
        for step in range(1, 11):
            self.mouse("mouseMoved", x + dx * step / 10, y + dy * step / 10, button="left", buttons=1)
        self.mouse("mouseReleased", x + dx, y + dy, button="left", clickCount=1)

    def key(self, key):
        self.call("Input.dispatchKeyEvent", type="keyDown", key=key)
        self.call("Input.dispatchKeyEvent", type="keyUp", key=key)

    def close(self):
        try:
            self.call("Browser.close")
        except (RuntimeError, OSError):
            pass
        self.process.wait(20)


def different(a, b):
    """Share of pixels that differ clearly, in percent. The blur forgives the edges' steps: the preview does
    not smooth, the browser does; and the picture as exported lies up to a pixel off the original's preview."""
    blurred = [["(", str(path), "-alpha", "off", "-blur", "0x1.2", ")"] for path in (a, b)]
    result = subprocess.run(["convert", *blurred[0], *blurred[1], "-compose", "difference", "-composite", "-separate",
                             "-evaluate-sequence", "max", "-threshold", "12%", "-format", "%[fx:mean*100]", "info:"],
                            capture_output=True, text=True, check=True)
    return float(result.stdout)


class Check:
    def __init__(self, folder, cli):
        self.folder, self.cli = folder, cli
        self.failures = 0

    def expect(self, right, what):
        print(("ok      " if right else "FAILED  ") + what, flush=True)
        self.failures += not right

    def preview(self, heading, pitch, fov):
        path = self.folder / f"preview {heading} {pitch} {fov}.png"
        if not path.exists():
            # Three times as large, to be smoothed as the browser smooths: the preview takes single pixels.
            large = self.folder / "large.png"
            subprocess.run([self.cli, "convert", "--quiet", "--from", "equirectangular", "--to", "preview", "--set",
                            "Resolution3=2", "--set", f"PreviewFOV={0.5 / math.tan(math.radians(fov / 2)):.6f}", "--camera",
                            f"{heading},{pitch},0", CARD, large], check=True, stdout=subprocess.DEVNULL)
            subprocess.run(["convert", large, "-filter", "box", "-resize", f"{WIDTH}x{HEIGHT}!", path], check=True)
        return path

    def same(self, browser, name, view, what, most=2.5):
        shot = self.folder / f"{name}.png"
        browser.screenshot(shot)
        share = different(shot, self.preview(*view))
        self.expect(share <= most, f"{what}: {share:.3f} % of the pixels differ from the preview")

    def camera(self, browser):
        """What the page tells a screen reader: heading (right), pitch (down) and angle of view."""
        browser.value("new Promise(done => setTimeout(done, 700))")
        text = browser.value("document.getElementById('place').textContent")
        heading, side, pitch, height, fov = re.match(
            r"Looking (\d+)\u00b0 to the (left|right), (\d+)\u00b0 (up|down), (\d+)\u00b0 wide", text).groups()
        return (int(heading) * (-1 if side == "left" else 1), int(pitch) * (1 if height == "down" else -1), int(fov))

    def near(self, got, expected, what):
        self.expect(all(abs(a - b) <= 1 for a, b in zip(got, expected)), f"{what}: {got}, expected {expected}")


def look(check, browser, way, base, painter):
    page = base + "card.html"
    for view in VIEWS:
        got = browser.open(page + "#heading={}&pitch={}&fov={}".format(*view))
        check.expect(got == painter, f"{way}: painted by {got}")
        check.same(browser, f"{way} {view[0]} {view[1]} {view[2]}", view, f"{way} {view}")

    # Without a view in the address, and with reduced motion: the front, 80 degrees wide.
    browser.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-reduced-motion", "value": "reduce"}])
    browser.open(page)
    time.sleep(1)
    check.same(browser, f"{way} start", (0, 0, 80), f"{way} at the start")
    started = time.time()
    browser.drag(640, 360, 300, 100)
    took = time.time() - started
    depth = 640 / math.tan(math.radians(40))
    dragged = (-math.degrees(10 * math.atan(30 / depth)), -math.degrees(10 * math.atan(10 / depth)), 80)
    browser.rest()
    check.near(check.camera(browser), dragged, f"{way} dragged ({took:.1f} s)")
    check.same(browser, f"{way} dragged", dragged, f"{way} dragged")
    browser.mouse("mouseWheel", 640, 360, deltaX=0, deltaY=-400)
    browser.rest()
    zoomed = (*dragged[:2], 80 * math.exp(-0.5))
    check.near(check.camera(browser), zoomed, f"{way} zoomed")
    check.same(browser, f"{way} zoomed", zoomed, f"{way} zoomed")
    for key in ["Home", "ArrowRight", "ArrowRight", "ArrowUp", "-"]:
        browser.key(key)
    browser.rest()
    keyed = (10, -5, 80 * 1.15)
    check.near(check.camera(browser), keyed, f"{way} keys")
    check.same(browser, f"{way} keys", keyed, f"{way} keys")
    browser.key("Home")
    # Two fingers, 200 pixels apart, then 400.
    for kind, half in [("touchStart", 100), ("touchMove", 150), ("touchMove", 200)]:
        browser.call("Input.dispatchTouchEvent", type=kind,
                     touchPoints=[{"x": 640 - half, "y": 360, "id": 0}, {"x": 640 + half, "y": 360, "id": 1}])
    browser.call("Input.dispatchTouchEvent", type="touchEnd", touchPoints=[])
    check.near(check.camera(browser), (0, 0, 40), f"{way} pinched")

    browser.call("Emulation.setEmulatedMedia", features=[])
    browser.open(page)
    first, later = (browser.value("new Promise(done => setTimeout(done, 700))") or
                    browser.call("Page.captureScreenshot", format="png")["data"] for _ in range(2))
    check.expect(first != later, f"{way}: turns by itself")
    browser.key("+")
    browser.rest()
    first, later = (browser.value("new Promise(done => setTimeout(done, 700))") or
                    browser.call("Page.captureScreenshot", format="png")["data"] for _ in range(2))
    check.expect(first == later, f"{way}: stops turning when a key is pressed")

    # The canvas has the screen's own pixels, also after the window's size has changed.
    browser.metrics(2, 800, 600)
    browser.rest()
    size = browser.value("(c => c.width + ' x ' + c.height)(document.querySelector('canvas'))")
    check.expect(size == "1600 x 1200", f"{way}: canvas of {size} on a screen of double density")
    browser.screenshot(check.folder / f"{way} double density.png")
    browser.metrics(1)

    for name in NAMES:
        address = base + urllib.parse.quote(name[:-4] + ".html")
        browser.open(address + "#fov=80")
        title = browser.value("document.title")
        check.expect(title == name, f"{way}: {name} has the title {title}")
        check.same(browser, f"{way} {NAMES.index(name)}", (0, 0, 80), f"{way}: {name}")

    browser.open(base + "missing.html")
    browser.screenshot(check.folder / f"{way} missing.png")
    text = browser.value("document.getElementById('message').innerText")
    check.expect("missing.png" in text and "cannot be shown" in text, f"{way}: {text}")


def main():
    arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    arguments.add_argument("--keep", type=pathlib.Path)
    arguments.add_argument("bin", nargs="?", type=pathlib.Path, default=ROOT / "build/native/bin")
    options = arguments.parse_args()
    chromium = next(filter(None, map(shutil.which, ["chromium", "chromium-browser", "google-chrome"])), None)
    if not chromium or not shutil.which("convert"):
        print("Not checked: that needs chromium and imagemagick.")
        return 0

    with tempfile.TemporaryDirectory(prefix="skyvault-web-page-") as temporary:
        temporary = pathlib.Path(temporary)
        folder = (options.keep or temporary / "pages").resolve()
        folder.mkdir(parents=True, exist_ok=True)
        # The program looks for Media and its module beside itself.
        (temporary / "bin").mkdir()
        shutil.copy2(options.bin / "skyvault-oiio.so", temporary / "bin")
        cli = pathlib.Path(shutil.copy2(options.bin / "skyvault-cli", temporary / "bin"))
        shutil.copytree(ROOT / "Media", temporary / "bin/Media")
        for name in [*NAMES, "missing.png"]:
            subprocess.run([cli, "convert", "--quiet", "--from", "equirectangular", "--to", "html", "--set",
                            "Resolution1=4", CARD, folder / name], check=True, stdout=subprocess.DEVNULL)
        (folder / "missing.png").unlink()

        check = Check(folder, cli)
        handler = type("Quiet", (http.server.SimpleHTTPRequestHandler,), {"log_message": lambda *_: None})
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(handler, directory=str(folder)))
        threading.Thread(target=server.serve_forever, daemon=True).start()
        browser = Browser(chromium, temporary / "profile")
        try:
            look(check, browser, "file", folder.as_uri() + "/", "canvas")
            look(check, browser, "server", f"http://127.0.0.1:{server.server_port}/", "webgl")
        finally:
            browser.close()
            server.shutdown()
    print(f"{check.failures} of the checks failed" if check.failures else "all is well")
    return 1 if check.failures else 0


if __name__ == "__main__":
    sys.exit(main())
