#!/usr/bin/python3
"""Write the tables of calls in docs/porting.md from platform/openclt/calls.def.

With --check nothing is written: status 1 when the tables are not what would be written, when calls.def, openclt.h and
the daemon do not have the same calls, or when the page's show commands are not those that the daemon runs.
"""

import argparse
import os
import re
import sys

HOME = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
PAGE = os.path.join(HOME, "docs", "porting.md")
BEGIN, END = "<!-- calls, written by tools/porting_md.py -->\n", "<!-- end of the calls -->\n"

ROW = re.compile(r'^LIST\("(.*)"\)$|^CALL\((\w+),\s*\(((?:[^()]|\([^()]*\))*)\),\s*((?:"(?:[^"\\]|\\.)*"\s*)+)\)$', re.M)
ARGUMENT = re.compile(r"([A-Z_]+)(?:\(([^()]*)\))?")
IN = ("KEY", "IN", "NAME", "KEY_TEXT", "COMMAND", "PATH")
BOTH = ("CURSOR", "CURSOR_TEXT", "CURSOR_RECORD", "COUNT")


def read(*path):
    with open(os.path.join(HOME, *path), encoding="utf-8") as file:
        return file.read()


def plain(name):
    return name.removeprefix("rpcclt_")


def room_words(room):
    if room.isdigit():
        return room + " bytes"
    return "as `%s` says" % plain(room) if "openapi" in room else "`%s` bytes" % room


def argument_words(kind, parts):
    if kind in ("TEXT", "BLOCK", "CURSOR_TEXT"):
        return "`%s` (%s, %s)" % (parts[0], "block" if kind == "BLOCK" else "text", room_words(parts[1]))
    if kind in ("KEY_TEXT", "NAME", "COMMAND", "PATH"):
        return "`%s` (text)" % parts[0]
    if kind == "PLACE":
        return "`%s` (`openclt_usp_t`)" % parts[0]
    return "`%s`" % parts[0] if len(parts) == 1 else "`%s` (`%s`)" % (parts[1], parts[0])


def table():
    """Calls by their names, and the lines of the page."""
    names, lines = [], []
    for title, name, arguments, meaning in ROW.findall(read("platform", "openclt", "calls.def")):
        if title:
            lines += ["", "### " + title, "", "| call | in | out | gives |", "|---|---|---|---|"]
            continue
        names.append(name)
        said = [(kind, argument_words(kind, re.split(r",\s*", parts)))
                for kind, parts in ARGUMENT.findall(arguments) if kind != "HANDLE"]
        meaning = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', meaning)).replace('\\"', '"')
        lines.append("| `%s` | %s | %s | %s |" % (
            plain(name), ", ".join(words.split(" (")[0] if kind in BOTH else words for kind, words in said
                                   if kind in IN + BOTH),
            ", ".join(words for kind, words in said if kind not in IN),
            re.sub(r"\b(?:openapi|openclt_)\w+", r"`\g<0>`", meaning)))
    return names, "\n".join(lines[1:]) + "\n"


def daemon_code():
    text = ""
    for folder, _, names in os.walk(os.path.join(HOME, "src")):
        for name in names:
            text += re.sub(r"//[^\n]*|/\*[\s\S]*?\*/", "", read(folder, name))
    return text


def faults(names, page):
    """What the table, the header, the page and the daemon do not agree about."""
    code = daemon_code()
    if re.findall(r"^int (\w+)\(", read("platform", "openclt", "openclt.h"), re.M) != names:
        yield "calls.def and openclt.h: not the same calls in the same order"
    for name in sorted(set(re.findall(r"\b(?:rpcclt_)?(openapi\w+)", code)) ^ set(map(plain, names))):
        yield "%s: %s" % (name, "not called" if name in map(plain, names) else "not in calls.def")
    patterns = {re.escape(text).replace("%d", r"\d+").replace("%s", r"[\d/]+")
                for text in re.findall(r'"(show [^"\\:]*)"', code)}
    headings = re.findall(r"^\*\*`(show .*?)`\*\* \((.*?)\)$", page, re.M)
    for pattern in sorted(patterns):
        if not any(re.fullmatch(pattern, command) for command, _ in headings):
            yield "%s: no such command on the page" % pattern
    for command, files in headings:
        if not any(re.fullmatch(pattern, command) for pattern in patterns):
            yield "%s: on the page, and not run" % command
        for name in files.split(", "):
            if "/" in name and not os.path.exists(os.path.join(HOME, name)):
                yield "%s: no such file" % name
    scenarios = read("docs", "scenarios.md")
    for model in re.findall(r'^ +\{"(\S+)", \d+, \d+, \{', read("platform", "virtual", "models.cpp"), re.M):
        if not re.search(r"^\|.*\b%s\b.*\|.*\|$" % re.escape(model), scenarios, re.M):
            yield "%s: a model that docs/scenarios.md does not list" % model


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true", help="write nothing; status 1 when something is out of date")
    options = parser.parse_args()
    page = read("docs", "porting.md")
    names, lines = table()
    before, rest = page.split(BEGIN)
    made = before + BEGIN + "\n" + lines + "\n" + END + rest.split(END)[1]
    if not options.check:
        with open(PAGE, "w", encoding="utf-8") as file:
            file.write(made)
        page = made
    found = list(faults(names, page))
    if page != made:
        found.append("docs/porting.md is not what calls.def says; run tools/porting_md.py")
    if found:
        sys.exit("\n".join(found))
    print("docs/porting.md agrees with calls.def, openclt.h and the daemon: %d calls" % len(names))


if __name__ == "__main__":
    main()
