#!/usr/bin/env python3
"""Checks what no compiler checks: the rules of the source tree.

Prints one line per finding, with the remedy, and fails if there is any.
"""

import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

# A module may include itself and what stands to its right.
MODULES = ["apps", "tabase", "tacompression", "groundwork", "platform"]
MODULE_OF_FOLDER = {
    "core/platform": "platform",
    "core/groundwork": "groundwork",
    "core/talibraries/tacompression": "tacompression",
    "core/talibraries/tabase": "tabase",
    "apps": "apps",
}
SYSTEM_HEADERS = re.compile(
    r'#\s*include\s*[<"](windows\.h|winsock2?\.h|pthread\.h|unistd\.h|dlfcn\.h|fcntl\.h|poll\.h|'
    r'dirent\.h|pwd\.h|rpc\w*\.h|uuid/uuid\.h|sqlite3\.h|sys/[\w/]+\.h|linux/[\w/]+\.h)[>"]', re.IGNORECASE)
SYSTEM_MACROS = re.compile(r"#.*\b(_WIN32|_WIN64|__linux__|__unix__|__APPLE__|__MINGW32__)\b")
INCLUDE = re.compile(r'#\s*include\s*"([\w-]+)/')
# A file list longer than this needs a map.
FILES_WITHOUT_MAP = 10

findings = []


def find(path, line, what):
    findings.append(f"{path}:{line}: {what}" if line else f"{path}: {what}")


def tracked(*patterns):
    listed = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard", "--", *patterns],
        cwd=ROOT, capture_output=True, text=True, check=True)
    return [name for name in listed.stdout.splitlines() if (ROOT / name).exists()]


def check_layers(name, lines):
    module = next((m for f, m in MODULE_OF_FOLDER.items() if name.startswith(f + "/")), None)
    if module is None:
        return
    for number, line in enumerate(lines, 1):
        match = INCLUDE.match(line.strip())
        if match and match[1] in MODULES and MODULES.index(match[1]) < MODULES.index(module):
            find(name, number, f"{module} may not include {match[1]}: turn the arrow round")
        if module != "platform":
            if SYSTEM_HEADERS.search(line):
                find(name, number, "a system header outside core/platform: add a platform service")
            if SYSTEM_MACROS.search(line) and not name.endswith("api.h"):
                find(name, number, "a system macro outside core/platform: add a platform service")


def check_source(name, lines):
    if (name.endswith(".h") and "#pragma once" not in lines[:3]
            and not name.startswith("core/platform/platformmacros")):  # included many times
        find(name, 1, "a header begins with #pragma once")
    for number, line in enumerate(lines, 1):
        if re.search(r"\b(TODO|XXX|HACK)\b", line):
            find(name, number, "finish it, or write FIXME: with the consequence")
        if re.search(r"\bstd::(latch|barrier|counting_semaphore|binary_semaphore)\b", line):
            find(name, number, "MinGW-w64's loses wake-ups: use tests/support/testlatch.h, or an event"
                 " of the library")
        if re.search(r"\bassert\s*\(", line) and "static_assert" not in line:
            find(name, number, "use TU_ASSERT, which tells the reader what he did")


def check_lists():
    """Every source, test, benchmark and fuzzer stands in the CMake list of its folder."""
    for name in tracked("core/*.cpp", "core/*.h", "apps/*.cpp", "tests/*.cpp", "benchmarks/*.cpp",
                        "fuzz/*.cpp", "examples/*.cpp", "extras/*.cpp"):
        path = Path(name)
        stem = re.sub(r"_(test|properties|benchmark|fuzz)$", "", path.stem)
        folder = path.parent
        while not (ROOT / folder / "CMakeLists.txt").exists():
            folder = folder.parent
        text = (ROOT / folder / "CMakeLists.txt").read_text()
        if not re.search(rf"(?<![\w-]){re.escape(stem)}(?!\w)", text):
            find(name, 0, f"stands in no list of {folder}/CMakeLists.txt")


def check_maps():
    for folder in ["core/platform", "core/groundwork", "core/talibraries/tabase",
                   "core/talibraries/tacompression", "apps/tamesh"]:
        names = {Path(n).stem for n in tracked(f"{folder}/*.h") if Path(n).parent == Path(folder)}
        if len(names) <= FILES_WITHOUT_MAP:
            continue
        readme = ROOT / folder / "README.md"
        if not readme.exists():
            find(folder, 0, "more than ten files and no README.md that maps them")
            continue
        text = readme.read_text()
        for stem in sorted(names):
            if f"`{stem}" not in text:
                find(f"{folder}/README.md", 0, f"does not map {stem}")


def check_links():
    for name in tracked("*.md"):
        text = (ROOT / name).read_text()
        for match in re.finditer(r"\]\(([^)#:\s]+)(#[^)]*)?\)", text):
            if not (ROOT / name).parent.joinpath(match[1]).exists():
                line = text.count("\n", 0, match.start()) + 1
                find(name, line, f"links to {match[1]}, which is not there")


def check_quotes():
    """A code block behind <!-- from FILE --> stands in that file, but for indentation; a line `...`
    leaves some out. So guides cannot drift away from the examples, which the tests build and run."""
    for name in tracked("*.md"):
        lines = (ROOT / name).read_text().split("\n")
        for number, line in enumerate(lines, 1):
            mark = re.fullmatch(r"<!-- from (\S+) -->", line)
            if not mark:
                continue
            if not (ROOT / mark[1]).exists() or not lines[number].startswith("```"):
                find(name, number, "a file of the tree stands in the mark, and a code block behind it")
                continue
            source = [text.strip() for text in (ROOT / mark[1]).read_text().split("\n")]
            quoted = [text.strip() for text in lines[number + 1:lines.index("```", number + 1)]]
            at = 0
            while quoted:
                length = quoted.index("...") if "..." in quoted else len(quoted)
                part, quoted = quoted[:length], quoted[length + 1:]
                at = next((i for i in range(at, len(source)) if source[i:i + length] == part), None)
                if at is None:
                    find(name, number, f"{mark[1]} has no such lines, in this order: {part[0]}")
                    break
                at += length


def main():
    for name in tracked("*.h", "*.cpp"):
        lines = (ROOT / name).read_text(encoding="utf-8").split("\n")
        check_layers(name, lines)
        check_source(name, lines)
    check_lists()
    check_maps()
    check_links()
    check_quotes()
    for finding in sorted(findings):
        print(finding)
    print(f"rules: {len(findings)} findings" if findings else "rules: kept")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
