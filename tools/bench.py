#!/usr/bin/env python3
"""Turns the JSON of the benchmark programs into docs/benchmarks.md.

usage: bench.py RESULTS_FOLDER OUTPUT
"""

import json
import platform
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

# What is compared: (program, subject, workload, ours, peers, kind, goal).
# Of several peers the best counts. The ratio is ours to the peer: of times for "time", where it is
# to be at most the goal, of throughputs for "rate", where it is to be at least the goal.
PAIRS = json.loads((ROOT / "benchmarks/pairs.json").read_text())


def medians(folder):
    """Nanoseconds per iteration by benchmark name, and the newest context."""
    times, context = {}, {}
    for path in sorted(Path(folder).glob("*.json")):
        data = json.loads(path.read_text())
        if data["context"]["date"] >= context.get("date", ""):
            context = data["context"]
        unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
        for run in data["benchmarks"]:
            if run.get("aggregate_name") == "median":
                times[run["run_name"]] = run["real_time"] * unit[run["time_unit"]]
    return times, context


def readable(nanoseconds):
    for unit, factor in [("s", 1e9), ("ms", 1e6), ("µs", 1e3)]:
        if nanoseconds >= factor:
            return f"{nanoseconds / factor:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def processor():
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.processor()


def rows(times):
    for pair in PAIRS:
        ours = times.get(pair["ours"])
        peers = {name: times[name] for name in pair["peers"] if name in times}
        if ours is None or not peers:
            continue
        peer, best = min(peers.items(), key=lambda item: item[1])
        rate = pair["kind"] == "rate"
        ratio = best / ours if rate else ours / best
        goal = pair.get("goal")
        if goal is None:
            verdict = ""
        else:
            word = "at least" if rate else "at most"
            reached = ratio >= goal if rate else ratio <= goal
            verdict = f"{word} {goal}" + ("" if reached else " — missed")
        shown = peer.removeprefix("BM_").split("/")[0].split("_")[0]
        yield (pair["subject"], pair["workload"], readable(ours), readable(best), shown,
               f"{ratio:.2f}", verdict)


def main():
    folder, output = sys.argv[1:3]
    times, context = medians(folder)
    compiler = subprocess.run(["g++", "--version"], capture_output=True, text=True, check=True)
    lines = [
        "# Benchmarks",
        "",
        "Ours beside the library that a user would take instead, on the same data in one run: "
        "medians over repetitions. Written by `tools/bench.sh`; only the ratios mean anything on "
        "another machine. A time ratio is ours to the peer's (smaller is better); a rate ratio is "
        "our throughput to the peer's (larger is better). Where several peers were measured, the "
        "best one counts.",
        "",
        f"Measured {context['date'][:10]} on {context['num_cpus']} cores of: {processor()}; "
        f"{compiler.stdout.splitlines()[0]}, `-O2`.",
        "",
        "| subject | workload | ours | peer | which | ratio | goal |",
        "|---|---|---|---|---|---|---|",
    ]
    lines += ["| " + " | ".join(row) + " |" for row in rows(times)]
    notes = ROOT / "benchmarks/notes.md"
    if notes.exists():
        lines += ["", notes.read_text().strip()]
    Path(output).write_text("\n".join(lines) + "\n")
    print(f"wrote {output}")


if __name__ == "__main__":
    main()
