"""Opens the report of a document with all parts in a headless browser, and asks the page itself
whether all is there. Arguments: the browser, a folder that may be replaced, what starts tamesh."""

import html
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import zlib
from pathlib import Path

LIMIT_S = 80

# It stands before the page's policy, which therefore lets it run, and sees all that fails later.
PROBE = """<script>
const faults = [], found = {};
addEventListener('error', e => faults.push(e.message || 'not loaded: ' + e.target.tagName), true);
addEventListener('securitypolicyviolation', e => faults.push('refused: ' + e.effectiveDirective));
const sizeOf = element => element.getBoundingClientRect();
function look() {
  const picture = document.getElementById('picture');
  found.pictureWidth = picture.complete ? picture.naturalWidth : 0;
  found.shownSize = sizeOf(picture).width * sizeOf(picture).height;
  const tree = document.getElementById('tree');
  found.treeHeight = sizeOf(tree).height;
  found.foreign = document.querySelectorAll('marquee').length === 0;
  const bars = [...document.querySelectorAll('#timeline .bar .work')];
  found.bars = bars.length;
  found.barWidth = Math.max(0, ...bars.map(bar => sizeOf(bar).width));
  // What the page's own script is for.
  document.querySelector('#Tree button + button').click();
  found.closed = tree.querySelectorAll('details[open]').length === 0;
  document.querySelector('#Tree button').click();
  found.leaf = sizeOf(tree.querySelector('.leaf')).height;
  const timeline = document.getElementById('timeline'), width = sizeOf(timeline).width;
  const zoom = document.querySelector('input[type=range]');
  zoom.value = 2;
  zoom.oninput();
  found.zoom = sizeOf(timeline).width / width;
}
addEventListener('load', () => {
  try { look(); } catch (failure) { faults.push(String(failure)); }
  found.faults = faults.slice();
  new Image().src = 'http://127.0.0.1:9/'; // is refused
  setTimeout(() => {
    found.policy = faults.includes('refused: img-src');
    const answer = document.createElement('pre');
    answer.id = 'probe';
    answer.textContent = JSON.stringify(found);
    document.body.append(answer);
  }, 500);
});
</script>"""


def browse(browser, folder, *options):
    """What the browser prints. It leaves no process behind."""
    command = [browser, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
               f"--user-data-dir={folder}/profile", "--virtual-time-budget=20000", *options]
    process = subprocess.Popen(command, cwd=folder, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, start_new_session=True)
    try:
        return process.communicate(timeout=LIMIT_S)[0].decode()
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass


def is_blank(picture):
    """Whether the rows of a PNG hold hardly any different bytes."""
    data, pixels, at = picture.read_bytes(), b"", 8
    while at < len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        if data[at + 4:at + 8] == b"IDAT":
            pixels += data[at + 8:at + 8 + size]
        at += size + 12
    return len(set(zlib.decompress(pixels))) < 50


def main(browser, folder, *tamesh):
    folder = Path(folder)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)

    def run(*arguments):
        subprocess.run([*tamesh, *arguments], cwd=folder, check=True, stdout=subprocess.DEVNULL,
                       timeout=LIMIT_S)

    run("make", "torus", "40", "-o", "torus.off")
    (folder / "torus.off").rename(folder / "<marquee>.off")
    (folder / "commands.txt").write_text(
        "info\ncomponents\npath --from 0 --to 820\ndistance --from 0\ncolour --by distance\n"
        "picture --path -o x.png --size 800x600\nsave -o x.tadoc\n")
    run("run", "<marquee>.off", "--script", "commands.txt")
    run("report", "x.tadoc", "-o", "report.html")

    page = (folder / "report.html").read_text(encoding="utf-8")
    (folder / "probed.html").write_text(page.replace("<head>", "<head>" + PROBE, 1),
                                        encoding="utf-8")
    answer = re.search(r'<pre id="probe">(.*?)</pre>',
                       browse(browser, folder, "--dump-dom", f"file://{folder}/probed.html"))
    if not answer:
        sys.exit("the page gave no answer")
    found = json.loads(html.unescape(answer[1]))
    expected = {
        "no fault": found["faults"] == [],
        "a picture": found.get("pictureWidth") == 800 and found["shownSize"] > 0,
        "a tree": found.get("treeHeight", 0) > 0,
        "names as text": found.get("foreign"),
        "bars": found.get("bars", 0) > 5 and found["barWidth"] > 1,
        "what opens the tree": found.get("closed") and found.get("leaf", 0) > 0,
        "a zoom": abs(found.get("zoom", 0) - 4) < 0.1,
        "a policy": found["policy"],
    }
    browse(browser, folder, "--screenshot=page.png", "--window-size=1000,1000",
           f"file://{folder}/report.html")
    expected["something to be seen"] = not is_blank(folder / "page.png")
    missing = [name for name, is_there in expected.items() if not is_there]
    if missing:
        sys.exit(f"missing: {', '.join(missing)}\n{found}")


if __name__ == "__main__":
    main(*sys.argv[1:])
