"""The whole road of tamesh, step by step, at several sizes: from a mesh file to a saved document.

usage: road.py TAMESH OUTPUT     measures, and puts the section into OUTPUT (docs/benchmarks.md)

One session (`tamesh shell`) for each size carries out the steps, one after the other; for each, the
time until its result is printed, and the most memory that the process had meanwhile. Sizes are of a
terrain, which tamesh makes.
"""

import re
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

# Steps along a side of the terrain: about 0.1, 1 and 4 million vertices.
SIZES = [316, 1000, 2000]
REPETITIONS = 3
HEAD = "## The road of tamesh"

STEPS = [
    ("open", "open {mesh}"),
    ("info", "info"),
    ("components", "components"),
    ("path, which makes the graph", "path --from 0 --to {last}"),
    ("path, once more", "path --from {last} --to 0"),
    ("distance", "distance --from 0"),
    ("colour by curvature", "colour --by curvature"),
    ("picture", "picture --path -o {folder}/road.png"),
    ("pack, lossless", "pack"),
    ("pack, 16 bits", "pack --bits 16"),
    ("save", "save -o {folder}/road.tadoc"),
    ("close", "close"),
    ("open the document", "open {folder}/road.tadoc"),
]


class Session:
    """A shell that tells when a command is done, and how much memory it took."""

    MARK = "Ends the session\n"

    def __init__(self, tamesh):
        self.process = subprocess.Popen([tamesh, "shell"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.folder = Path(f"/proc/{self.process.pid}")

    def run(self, command):
        """Seconds, and the most memory meanwhile, in MiB."""
        (self.folder / "clear_refs").write_text("5")
        start = time.perf_counter()
        self.process.stdin.write(command + "\nhelp quit\n")
        self.process.stdin.flush()
        output = ""
        while not (line := self.process.stdout.readline()) == self.MARK:
            if not line:
                sys.exit(f"{command}: the session has ended")
            output += line
        seconds = time.perf_counter() - start
        for _ in range(4):  # the rest of the help
            self.process.stdout.readline()
        if not output:
            sys.exit(f"{command}: no result")
        peak = re.search(r"VmHWM:\s+(\d+) kB", (self.folder / "status").read_text())
        return seconds, int(peak.group(1)) / 1024

    def end(self):
        self.process.communicate("quit\n")


def run_once(tamesh, folder, side):
    mesh = f"{folder}/road.off"
    subprocess.run([tamesh, "make", "terrain", str(side), "-o", mesh], check=True)
    names = {"mesh": mesh, "folder": folder, "last": (side + 1) ** 2 - 1}
    session = Session(tamesh)
    results = [session.run(command.format(**names)) for _, command in STEPS]
    session.end()
    checked = []
    for command in (["check", f"{folder}/road.tadoc"],
                    ["report", f"{folder}/road.tadoc", "-o", f"{folder}/road.html"]):
        start = time.perf_counter()
        subprocess.run([tamesh, *command], check=True, stdout=subprocess.DEVNULL)
        checked.append((time.perf_counter() - start, None))
    return results + checked


def measure(tamesh):
    """For each size the medians of seconds and MiB of each step."""
    table = []
    with tempfile.TemporaryDirectory() as folder:
        for side in SIZES:
            runs = [run_once(tamesh, folder, side) for _ in range(REPETITIONS)]
            table.append([
                (statistics.median(run[i][0] for run in runs),
                 statistics.median(run[i][1] for run in runs) if runs[0][i][1] else None)
                for i in range(len(runs[0]))])
            print(f"road: {side} done", flush=True)
    return table


def three_digits(number):
    return f"{number:,.0f}" if number >= 100 else f"{number:.3g}"


def cell(result, vertices):
    seconds, memory = result
    time_text = f"{three_digits(seconds)} s" if seconds >= 1 else f"{three_digits(seconds * 1e3)} ms"
    text = f"{time_text}, {three_digits(seconds / vertices * 1e9)} ns"
    return text + (f", {memory:,.0f} MiB" if memory else "")


def section(table):
    counts = [(side + 1) ** 2 for side in SIZES]
    names = [name for name, _ in STEPS] + ["`check`, a process of its own", "`report`, likewise"]
    lines = [
        HEAD, "",
        "A session opens a terrain, works on it, saves it and opens the document. For each step: the "
        "time until its result is printed, the same per vertex, and the most memory that the process "
        f"had meanwhile; medians of {REPETITIONS} sessions. Measured by `benchmarks/road.py` on "
        f"{time.strftime('%Y-%m-%d')}.", "",
        "| step | " + " | ".join(f"{count:,} vertices" for count in counts) + " |",
        "|---" * (len(counts) + 1) + "|"]
    for i, name in enumerate(names):
        cells = [cell(table[size][i], counts[size]) for size in range(len(counts))]
        lines.append(f"| {name} | " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n\n"


def put(text, new):
    """The page with the new section in the place of the old one, or before the notes."""
    if HEAD in text:
        begin = text.index(HEAD)
        return text[:begin] + new + text[text.index("\n## ", begin) + 1:]
    place = text.index("## Notes")
    return text[:place] + new + text[place:]


def main():
    tamesh, output = sys.argv[1], Path(sys.argv[2])
    new = section(measure(tamesh))
    output.write_text(put(output.read_text(), new))
    print(f"wrote {output}")


if __name__ == "__main__":
    main()
