"""Pages in headless Chromium: what they become, and pictures of them."""
import os
import re
import shutil
import subprocess
import tempfile

PROGRAM = shutil.which("chromium")
# What a phone shows in portrait.
PHONE_WIDTH = 390
# Has the page say in its title after how many milliseconds it was loaded, its own scripts included.
PROBE = '<script>addEventListener("load", () => document.title = performance.now());</script>'


def run(page, *options):
    with tempfile.TemporaryDirectory() as profile:
        done = subprocess.run([PROGRAM, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                               f"--user-data-dir={profile}", *options, "file://" + os.path.abspath(page)],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=120, check=True)
    return done.stdout.decode("utf-8")


def document(page, *options):
    """The page's elements after its scripts have run."""
    return run(page, "--dump-dom", "--virtual-time-budget=5000", *options)


def milliseconds_to_load(page):
    with open(page, encoding="utf-8") as file:
        text = file.read()
    with tempfile.NamedTemporaryFile("w", suffix=".html", encoding="utf-8") as probed:
        probed.write(text.replace("</body>", PROBE + "</body>"))
        probed.flush()
        # In the time of the clock, not of the browser's own, which it can spend at will.
        return float(re.search(r"<title>([\d.]+)</title>", run(probed.name, "--dump-dom"))[1])


def screenshot(page, picture, width, height, *options):
    run(page, f"--screenshot={os.path.abspath(picture)}", f"--window-size={width},{height}", "--virtual-time-budget=5000",
        *options)


def on_a_phone(page, folder):
    """A page that shows the page as wide as a phone has it: no window of Chromium's is that narrow."""
    frame = os.path.join(folder, "phone.html")
    with open(frame, "w", encoding="utf-8") as file:
        file.write(f'<body style="margin:0;background:#888"><iframe src="file://{os.path.abspath(page)}" '
                   f'style="width:{PHONE_WIDTH}px;height:3000px;border:0"></iframe></body>')
    return frame


def print_to(page, paper):
    run(page, f"--print-to-pdf={os.path.abspath(paper)}", "--no-pdf-header-footer", "--virtual-time-budget=5000")
