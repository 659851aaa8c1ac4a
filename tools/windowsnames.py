#!/usr/bin/env python3
"""Checks that no public header is broken, or renamed, by the macros of windows.h.

An identifier in a public header that is a macro of the Windows headers must stand in the lists of
core/platform/platformmacrospush.h and platformmacrospop.h, and its header must include both. Needs
MinGW-w64. Prints one line per finding, with the remedy, and fails if there is any.
"""

import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
COMPILER = "x86_64-w64-mingw32-g++-posix"
PUSH = "platform/platformmacrospush.h"
POP = "platform/platformmacrospop.h"
# What a program for Windows commonly includes.
HEADERS = ["winsock2.h", "ws2tcpip.h", "windows.h", "windowsx.h", "commctrl.h", "commdlg.h",
           "mmsystem.h", "objbase.h", "oleauto.h", "psapi.h", "rpc.h", "shlobj.h", "shlwapi.h",
           "tchar.h", "tlhelp32.h"]


def macros_of(source, *options):
    listed = subprocess.run([COMPILER, "-std=c++20", "-x", "c++", "-dM", "-E", *options, "-"],
                            input=source, capture_output=True, text=True, check=True)
    return set(re.findall(r"^#define (\w+)", listed.stdout, re.MULTILINE))


def system_macros():
    source = "".join(f"#include <{header}>\n" for header in HEADERS)
    return (macros_of(source) | macros_of(source, "-DUNICODE", "-D_UNICODE")) - macros_of("")


def names_in(path, pragma):
    return re.findall(rf'#pragma {pragma}_macro\("(\w+)"\)', (ROOT / "core" / path).read_text())


def identifiers_of(text):
    """Those of the code, with their first lines; without comments, texts and our own macros."""
    blank = lambda match: re.sub(r"[^\n]", " ", match[0])
    text = re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', blank, text, flags=re.DOTALL)
    own = set(re.findall(r"#\s*define\s+(\w+)", text))
    lines = {}
    for match in re.finditer(r"\b[A-Za-z]\w*\b", text):
        if match[0] not in own:
            lines.setdefault(match[0], text.count("\n", 0, match.start()) + 1)
    return lines


def main():
    findings = []
    listed = names_in(PUSH, "push")
    if listed != names_in(POP, "pop") or listed != sorted(set(listed)):
        findings.append(f"core/{PUSH}: the same names as in {POP}, each once and in order")
    macros = system_macros()
    headers = [path for path in sorted((ROOT / "core").rglob("*.h"))
               if path.parent.name not in ("posix", "win32") and "macrosp" not in path.name]
    for path in headers:
        text = path.read_text()
        place = path.relative_to(ROOT)
        guarded = f'#include "{PUSH}"' in text and text.rstrip().endswith(f'#include "{POP}"')
        for name, line in sorted(identifiers_of(text).items()):
            if name not in macros:
                continue
            if name not in listed:
                findings.append(f"{place}:{line}: {name} is a macro of windows.h: rename it, or add "
                                f"it to core/{PUSH} and core/{POP}")
            elif not guarded:
                findings.append(f"{place}:{line}: {name} is a macro of windows.h: include {PUSH} "
                                f"behind the other headers, end with {POP}, and add PLATFORM_RENAMED "
                                "beside a member of that name")
    for finding in findings:
        print(finding)
    print(f"Windows names: {len(findings)} findings" if findings
          else f"Windows names: no clash in {len(headers)} headers with {len(macros)} macros")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
