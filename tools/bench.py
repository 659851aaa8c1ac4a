#!/usr/bin/env python3
"""Runs the benchmark programs and turns their results into docs/benchmarks.md.

usage: bench.py PROGRAMS_FOLDER RESULTS_FOLDER OUTPUT [NAME...]

Each row of the table is a process of its own, in which the runs of ours and of its peers alternate:
what other cases leave behind in the allocator and in the caches must not decide a comparison. Then
each job that has a goal is run at all its sizes. The raw results stay in RESULTS_FOLDER, a file per
process. With NAMEs (without "_benchmark") only these programs are run; the rest stays as last
measured.
TABASE_BENCH_REPETITIONS (5) says how often each case is repeated.
"""

import json
import os
import platform
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

# What is compared: objects of subject, workload, ours, peers, kind and, where there is one, goal.
# Of several peers the best counts. The ratio is ours to the peer: of times for "time" and of sizes
# for "size" (the counter "bytes"), where it is to be at most the goal, of throughputs for "rate",
# where it is to be at least the goal. Without peers stand "bytes", a size that is to be at most the
# goal, and "speed", in bytes per second.
PAIRS = json.loads((ROOT / "benchmarks/pairs.json").read_text())


def result_path(results, *names):
    return results / (re.sub(r"\W+", "_", "-".join(names))[:200] + ".json")


def growth_stems():
    """The jobs with a goal, without their size: "BM_TuList_Walk/" of "BM_TuList_Walk/1000000"."""
    sized = [pair["ours"] for pair in PAIRS if pair.get("goal") and "/" in pair["ours"]]
    return list(dict.fromkeys(re.sub(r"\d+$", "", name) for name in sized))


def cases(program):
    listed = subprocess.run([program, "--benchmark_list_tests"], capture_output=True, text=True,
                            check=True)
    return set(listed.stdout.split())


def measure(program, names, path):
    part = path.with_suffix(".part")  # a run that is interrupted leaves the former result
    subprocess.run(
        [program, f"--benchmark_filter=^({'|'.join(names)})$",
         f"--benchmark_repetitions={os.environ.get('TABASE_BENCH_REPETITIONS', '5')}",
         "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true",
         f"--benchmark_out={part}", "--benchmark_out_format=json"],
        check=True, stdout=subprocess.DEVNULL)
    part.replace(path)


def sizes_of(stem, present):
    return sorted((name for name in present if re.fullmatch(re.escape(stem) + r"\d+", name)),
                  key=size_of)


def size_of(name):
    return int(name.rsplit("/", 1)[1])


def measure_all(programs, results, wanted):
    results.mkdir(parents=True, exist_ok=True)
    for program in sorted(programs.glob("*_benchmark")):
        name = program.name.removesuffix("_benchmark")
        if not wanted or name in wanted:
            print(f"measuring {name}", flush=True)
            present = cases(program)
            # Rows that differ only in what they compare of the same cases share a run.
            runs = [tuple([pair["ours"], *pair["peers"]]) for pair in PAIRS
                    if pair["ours"] in present]
            for names in dict.fromkeys(runs):
                measure(program, [name for name in names if name in present],
                        result_path(results, *names))
            for stem in growth_stems():
                if names := sizes_of(stem, present):
                    measure(program, names, result_path(results, "growth", stem))


def medians(path, kind="time"):
    """What the kind counts, by benchmark name (nanoseconds per iteration, where it compares times),
    and the context."""
    data = json.loads(path.read_text())
    unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    counters = {"bytes": "bytes", "size": "bytes", "speed": "bytes_per_second"}
    values = {run["run_name"]: run[counters[kind]] if kind in counters
              else run["real_time"] * unit[run["time_unit"]]
              for run in data["benchmarks"] if run.get("aggregate_name") == "median"}
    return values, data["context"]


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


def row_without_peer(pair, values):
    ours = values[pair["ours"]]
    if pair["kind"] == "speed":
        shown, verdict = f"{ours / 1e6:.0f} MB/s", ""
    else:
        missed = "" if ours <= pair["goal"] else " — missed"
        shown, verdict = f"{ours:.0f} bytes", f"at most {pair['goal']} bytes{missed}"
    return "| " + " | ".join([pair["subject"], pair["workload"], shown, "", "", "", verdict]) + " |"


def row(pair, times):
    if not pair["peers"]:
        return row_without_peer(pair, times)
    ours = times[pair["ours"]]
    peers = {name: times[name] for name in pair["peers"] if name in times}
    peer, best = min(peers.items(), key=lambda item: item[1])
    rate = pair["kind"] == "rate"
    size = pair["kind"] == "size"
    ratio = best / ours if rate else ours / best
    goal = pair.get("goal")
    if goal is None:
        verdict = ""
    else:
        word = "at least" if rate else "at most"
        reached = ratio >= goal if rate else ratio <= goal
        verdict = f"{word} {goal}" + ("" if reached else " — missed")
    shown = peer.removeprefix("BM_").split("/")[0].split("_")[0]
    cells = [pair["subject"], pair["workload"],
             *(f"{value:.3f} bytes" if size else readable(value) for value in [ours, best]), shown,
             f"{ratio:.4f}" if size else f"{ratio:.2f}", verdict]
    return "| " + " | ".join(cells) + " |"


def growth_rows(results):
    for stem in growth_stems():
        path = result_path(results, "growth", stem)
        if path.exists():
            times, _ = medians(path)
            cells = [f"{size_of(name):,}: {readable(times[name] / size_of(name))}"
                     for name in sorted(times, key=size_of)]
            yield f"| `{stem.removeprefix('BM_').removesuffix('/')}` | {'; '.join(cells)} |"


def write_table(results, output):
    compiler = subprocess.run(["g++", "--version"], capture_output=True, text=True, check=True)
    lines, context = [], {}
    for pair in PAIRS:
        path = result_path(results, pair["ours"], *pair["peers"])
        if not path.exists():
            print(f"no result yet: {pair['subject']}, {pair['workload']}")
            continue
        times, row_context = medians(path, pair["kind"])
        if row_context["date"] >= context.get("date", ""):
            context = row_context
        if len(times) > 1 or not pair["peers"]:
            lines.append(row(pair, times))
    head = [
        "# Benchmarks",
        "",
        "Ours beside the library that a user would take instead, on the same data: each row is a "
        "run of its own, in which ours and the peers alternate; medians over repetitions. Written "
        "by `tools/bench.sh`; only the ratios mean anything on another machine. A time ratio is "
        "ours to the peer's (smaller is better), and so is one of sizes, which are per number; a rate "
        "ratio is our throughput to the peer's (larger is better). Where several peers were measured, the best one counts.",
        "",
        f"Measured {context['date'][:10]} on {context['num_cpus']} cores of: {processor()}; "
        f"{compiler.stdout.splitlines()[0]}, `-O2`.",
        "",
        "| subject | workload | ours | peer | which | ratio | goal |",
        "|---|---|---|---|---|---|---|",
    ]
    growth = [
        "",
        "## How the cost grows",
        "",
        "Ours alone, time per item (an element, a key, a record, a byte of text) at each size. A "
        "linear job stays level as long as its data fit the same cache; what misses the cache at "
        "each item (finding keys, joining random sets) rises where they no longer do, and so does "
        "what writes into memory that is fresh from the system.",
        "",
        "| job | time per item at a size |",
        "|---|---|",
        *growth_rows(results),
    ]
    notes = (ROOT / "benchmarks/notes.md").read_text().strip()
    former = output.read_text() if output.exists() else ""
    road = re.search(r"^## The road of tamesh\n.*?(?=^## )", former, re.S | re.M)
    kept = [road.group(0).rstrip(), ""] if road else []
    output.write_text("\n".join([*head, *lines, *growth, "", *kept, notes]) + "\n")
    print(f"wrote {output}")


def main():
    programs, results, output = map(Path, sys.argv[1:4])
    measure_all(programs, results, sys.argv[4:])
    write_table(results, output)


if __name__ == "__main__":
    main()
