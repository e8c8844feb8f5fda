#!/usr/bin/python3
"""Write the man page of the scenario format, devmgr-scenario(5), from docs/scenarios.md to standard output.

Knows what that page uses: headings, paragraphs, indented text, lists of one level, tables of two columns, and within a
line code, bold text and links.
"""

import argparse
import re
import sys

HEAD = r""".TH DEVMGR-SCENARIO 5 "" "devmgr %s" "File formats"
.SH NAME
devmgr-scenario \- scenario of the virtual switch of devmgr
.SH DESCRIPTION
"""
FOOT = r""".SH SEE ALSO
.BR vswitch (1),
.BR devmgr (8)
"""


def escaped(text):
    text = text.replace("\\", r"\e").replace("-", r"\-")
    text = "".join(c if ord(c) < 128 else r"\[u%04X]" % ord(c) for c in text)
    return r"\&" + text if text[:1] in (".", "'") else text


def inline(text):
    text = re.sub(r"\[([^]]+)\]\([^)]+\)", r"\1", text)
    parts = re.split(r"(`[^`]+`|\*\*[^*]+\*\*)", text)
    return "".join(r"\fB%s\fP" % escaped(part.strip("`*")) if part[:1] == "`" or part[:2] == "**" else escaped(part)
                   for part in parts if part)


def row_lines(row):
    cells = [cell.strip() for cell in row.strip("|").split("|")]
    if len(cells) != 2:
        sys.exit("scenarios_man: not a row of two columns: %s" % row)
    return [".TP", inline(cells[0]), inline(cells[1]) or r"\&"]


def page_lines(lines):
    """man's lines for those of the page; what is in no other block is a paragraph."""
    block = None
    for line, following in zip(lines, lines[1:] + [""]):
        code = line.startswith("    ") or (block == "code" and not line and following.startswith("    "))
        if block == "code" and not code:
            yield from (".EE", ".RE")
        if code:
            if block != "code":
                yield from (".PP", ".RS 4", ".EX")
            yield escaped(line[4:]) or r"\&"
            block = "code"
        elif line.startswith("#"):
            level, title = line.split(" ", 1)
            yield (".SH " if level == "##" else ".SS ") + escaped(title.upper() if level == "##" else title)
            block = None
        elif line.startswith("|"):
            if "---" not in line and "---" not in following: # neither the rule of a table nor its head
                yield from row_lines(line)
            block = None
        elif line.startswith("- "):
            yield from (r".IP \(bu 3", inline(line[2:]))
            block = "text"
        elif line:
            if block != "text":
                yield ".PP"
            yield inline(line.strip())
            block = "text"
        else:
            block = None
    if block == "code":
        yield from (".EE", ".RE")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("version")
    parser.add_argument("page")
    options = parser.parse_args()
    with open(options.page, encoding="utf-8") as file:
        title, *lines = file.read().splitlines()
    if not title.startswith("# "):
        sys.exit("scenarios_man: %s: no title" % options.page)
    sys.stdout.write(HEAD % options.version + "\n".join(page_lines(lines)) + "\n" + FOOT)


if __name__ == "__main__":
    main()
