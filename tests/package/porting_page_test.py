#!/usr/bin/python3
"""porting_page_test.py SOURCE - docs/porting.md lists exactly the calls and show commands that src/ uses."""

import os
import re
import sys

home = sys.argv[1]
page = open(os.path.join(home, "docs", "porting.md")).read()
code = ""
for folder, _, names in os.walk(os.path.join(home, "src")):
    for name in names:
        code += re.sub(r"//[^\n]*|/\*[\s\S]*?\*/", "", open(os.path.join(folder, name)).read())

CALL = r"\b(?:rpcclt_)?(openapi\w+|l7proc_\w+)"
used = set(re.findall(CALL, code))
listed = set(re.findall(CALL, "\n".join(row for row in page.splitlines() if row[:1] == "|" or "l7proc_" in row)))
faults = ["%s: not in the tables of calls" % name for name in used - listed]
faults += ["%s: listed, and not called" % name for name in listed - used]

patterns = [re.escape(text).replace("%d", r"\d+").replace("%s", r"[\d/]+") for text in re.findall(r'"(show [^"\\:]*)"', code)]
headings = re.findall(r"^\*\*`(show .*?)`\*\* \((.*?)\)$", page, re.M)
faults += ["%s: no such command on the page" % pattern for pattern in set(patterns)
           if not any(re.fullmatch(pattern, command) for command, _ in headings)]
faults += ["%s: on the page, and not run" % command for command, _ in headings
           if not any(re.fullmatch(pattern, command) for pattern in patterns)]
faults += ["%s: no such file" % name for _, files in headings for name in files.split(", ")
           if "/" in name and not os.path.exists(os.path.join(home, name))]
print("\n".join(sorted(faults)))
sys.exit(len(faults) > 0 or len(used) < 100 or len(headings) < 30)
