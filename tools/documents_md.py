#!/usr/bin/python3
"""Write docs/documents.md from the schemas and from the daemon's table of documents.

What a document holds, its fields and where they come from stand in docs/schemas ("description", "x-source"); when it is
rebuilt stands in src/documents.cpp, which tools/docnames of a build tells. Writes the example of each schema too, from the
goldens. With --check nothing is written: status 1 when a file is not what would be written, or when a source is named that
the daemon does not use.
"""

import argparse
import glob
import json
import os
import re
import subprocess
import sys
from urllib.parse import quote

import validate

HOME = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
PAGE = os.path.join(HOME, "docs", "documents.md")
EXAMPLES = os.path.join(HOME, "tests", "golden", "two-port")
MONITOR = os.path.join(HOME, "src", "restcache", "monitor.h")
CALLS = os.path.join(HOME, "platform", "openclt", "openclt.h")
TICK_SECONDS = 1
LARGEST = 4294967295  # a limit of the type, not of the value: not shown

GROUPS = (
    ("Ports", ("swcfg_port", "swcfg_ports_status", "swcfg_ports_settings", "interfaces_status", "portStats_inbound_ex",
               "portStats_outbound_ex", "neighbor_ex/N", "port_vendor_detect", "fiberOptics", "port_hardware_info")),
    ("Features", ("vlan_list", "profile", "profile/list_ex", "sw_lag_cfg", "sw_lag_cfg_ex", "sw_auto_lag_cfg",
                  "sw_auto_trunk_cfg", "sw_manual_trunk_cfg", "swcfg_poe", "swcfg_poe_info", "scheduleList",
                  "multicast_mode_ex", "multicast_block_address", "multicast_groups_ex/N", "radius_config",
                  "radius_port_config", "sw_portmirroring", "sw_ptp_cfg", "logging", "bufferedLog", "imageInfo")),
    ("System", ("system_info", "device_health", "device_time", "special_interface_route", "stacking",
                "init_complete")),
)

PORTS = """
## Which ports a document lists

A port is **detached** when it is not there at the moment: a front port that is fanned out, or a sub-port of one that is not.
A **front port** has a number not above the unit's number of front ports; the others are sub-ports. LAGs are listed as rows of
their own where it is said.

| document | front ports | sub-ports | LAGs |
|---|---|---|---|
| interfaces_status | all, also detached | all, also detached | all, below `lag` |
| port_hardware_info, radius_port_config, port_vendor_detect | all, also detached | all, also detached | none |
| portStats_inbound_ex, portStats_outbound_ex | all, also detached | all, also detached | those with members |
| swcfg_ports_status, swcfg_ports_settings | all, also detached | attached | all |
| swcfg_port | all, also detached, below `port` | attached, below `fanout` | none |
| swcfg_poe | those that can feed power | those that can feed power | none |
| neighbor_ex | those with a device | those with a device | none |
| fiberOptics | those with an optic | those with an optic | none |
| multicast_mode_ex | multicast router ports and blocked ones | the same | the same, below `lagPort` |

Of the ports of cards `swcfg_port` and the two `swcfg_ports_` documents tell more in their own sections.
"""

HEAD = """\
# The documents

<!-- Written by tools/documents_md.py from docs/schemas and the refresh schedule; do not edit. -->

What every document of the REST cache holds. How to open the cache and follow its changes is in
[consuming.md](consuming.md). Each document has a JSON Schema (2020-12) with an example under [schemas](schemas);
[index.json](schemas/index.json) there finds the file of an API name. `./dev run --check` and the tests hold all
documents against them; `tools/validate.py --db /tmp/restapi_db` does it with any cache.

Titles in the schemas are names of types, no two alike. All types of TypeScript in one file, with `Documents`, which finds
them by API name, and a strict validator that is told of this project's keywords (the document in words, its API name, where
a value comes from):

    npx json-schema-to-typescript --cwd docs/schemas docs/schemas/index.json >documents.d.ts

    const ajv = new (require("ajv/dist/2020"))({strict: true, keywords: ["x-heading", "x-api-name", "x-source"]});
    for (const file of fs.readdirSync("docs/schemas"))
      ajv.addSchema(JSON.parse(fs.readFileSync("docs/schemas/" + file)));
    const validate = ajv.getSchema("https://devmgr.example/schemas/swcfg_poe.json");

What holds for all of them:

- A record is an object with two members: the payload under its key, then `resp` with `respCode`, `respMsg` and `status`.
  A document that cannot be built is not stored and the old record stays, so `resp` always says success.
- One read that fails does not spoil a document: the field shows its default. Where none is said with the field it is 0,
  false, empty or "Disable". The few documents that are not built then say so.
- A list that cannot be walked (units, ports, LAGs, VLANs, entries of a table) ends there: its rows are missing. Numbers of
  LAGs count from the first LAG, and are wrong while that is not known.
- **Interface number** means the platform's number of a port or LAG. It is the same in all documents, and the one to join
  them by; it is called `portNum` nearly everywhere. A **LAG number** counts LAGs from 1.
- Codes of the platform are passed on as they are. Keys and words are an interface: those that are misspelled
  (`percetUtilizationReceived`, `Forwding`) stay as they are.
- A field with a question mark can be absent. Numbers are whole numbers unless said otherwise.
- *From* names the call of the client interface (`platform/openclt/openclt.h`, without its `rpcclt_` prefix) or the show
  command. "vlanInfo store" is the VLAN profile database `/tmp/vlanInfo.db`, "OUI database" the table of makers by MAC
  address, "model tables" the daemon's own knowledge of models; "fixed" is no reading at all.
- *Rebuilt*: cycles are %d seconds apart and are counted from 1. In the first cycle everything on the schedule is built;
  after that the numbers of the cycles are given. A record is written only when its text has changed.

| document | payload key | rebuilt | |
|---|---|---|---|
"""


# ---- the schedule ----

def schedule(docnames):
    """(seconds between cycles, API name -> in words when it is rebuilt), from the daemon's table."""
    with open(MONITOR, encoding="utf-8") as file:
        seconds = TICK_SECONDS * int(re.search(r"REFRESH_PERIOD = (\d+);", file.read()).group(1))
    words = {}
    for row in subprocess.run([docnames, "--rows"], check=True, capture_output=True, text=True).stdout.splitlines():
        name, due, period, phase, start, _ = row.split("\t")
        words[name] = {
            "no cycle": "" if int(start) else "only when its writeback is asked for (`./dev doc %s`)" % name,
            "port up": "in the cycle in which a port came up, and in the next two",
            "request": "on request ([consuming.md](consuming.md#fresh-optics))",
        }.get(due, cycles(int(period), int(phase), seconds))
        if name == "init_complete":
            words[name] = "once, at start"
        elif int(start):
            words[name] = "at start" + (", then " + words[name] if words[name] else "")
    return seconds, words


def cycles(period, phase, seconds):
    if period == 1:
        return "every cycle"
    first = phase or period
    numbers = ", ".join(str(first + turn * period) for turn in range(3))
    minutes = period * seconds // 60
    return "cycles %s ... (every %s)" % (numbers, "minute" if minutes == 1 else "%d minutes" % minutes)


# ---- fields ----

def is_list_of_objects(schema):
    return schema.get("type") == "array" and "properties" in schema.get("items", {})


def type_words(schema):
    kind = schema.get("type")
    if kind == "array":
        if is_list_of_objects(schema):
            return "list of objects"
        inner = schema["items"].get("type")
        return {"integer": "list of numbers", "string": "list of texts", "object": "list of objects"}.get(inner, "list")
    if kind == "object":
        return "object"
    if kind == "boolean":
        return "true, false" if "const" not in schema else "false"
    values = schema.get("enum", [schema["const"]] if "const" in schema else None)
    if kind == "string":
        if values:
            return ", ".join('`"%s"`' % value for value in values)
        return "text" + (", up to %d" % schema["maxLength"] if "maxLength" in schema else "")
    words = "number" if kind == "integer" else "number or null"
    if values:
        return words + " " + ", ".join(str(value) for value in values)
    low, high = schema.get("minimum"), schema.get("maximum")
    if high is not None and high < LARGEST // 2:
        return words + " %d to %d" % (low, high)
    return words + (", from %d" % low if low == 1 or low == -1 else "")


def source_words(sources):
    return ", ".join("`%s`" % source if source.startswith(("openapi", "show ")) else source for source in sources)


def table(properties, required):
    lines = ["| field | type | meaning | from |", "|---|---|---|---|"]
    for key, schema in properties.items():
        name = "`%s`%s" % (key, "" if key in required else "?")
        lines.append("| %s | %s | %s | %s |" % (name, type_words(schema), schema["description"],
                                                source_words(schema.get("x-source", []))))
    return lines


def object_lines(schema, path, seen):
    """Tables of an object or of a list of them, and of what lies within. Equal tables of a document stand once."""
    inner = schema["items"] if schema.get("type") == "array" else schema
    path += "[]" if schema.get("type") == "array" else ""
    if "properties" not in inner or not inner["properties"]:
        return []
    for other, properties in seen:
        if properties == inner["properties"]:
            return ["", "`%s`: as `%s`." % (path, other)]
        if properties.items() <= inner["properties"].items():
            more = {key: schema for key, schema in inner["properties"].items() if key not in properties}
            return ["", "`%s`: as `%s`, and:" % (path, other), ""] + table(more, inner.get("required", []))
    seen.append((path, inner["properties"]))
    said = " " + schema["description"] if len(seen) == 1 and schema is not inner else ""
    lines = ["", "`%s`:%s" % (path, said), ""] + table(inner["properties"], inner.get("required", []))
    for key, below in inner["properties"].items():
        if below.get("type") == "object" or is_list_of_objects(below):
            lines += object_lines(below, path + "." + key, seen)
    return lines


# ---- examples ----

def with_examples():
    """(path, text) of each document's schema, with the golden of a small switch as its example, on one line; as long as
    there is no golden, without."""
    for name, file in validate.index().items():
        path = os.path.join(validate.SCHEMA_FOLDER, file)
        with open(path, encoding="utf-8") as schema:
            text = schema.read()
        text = re.sub(r'^  "examples": .*\n', "", text, flags=re.M)
        golden = os.path.join(EXAMPLES, quote(name.replace("/N", "/0"), safe="") + ".json")
        if os.path.exists(golden):
            with open(golden, encoding="utf-8") as document:
                example = json.dumps(json.load(document), ensure_ascii=False)
            text = text.replace('  "x-api-name": ', '  "examples": [%s],\n  "x-api-name": ' % example, 1)
        yield path, text


# ---- the page ----

def anchor(name):
    return re.sub(r"[^a-z0-9_-]", "", name.lower())


def payload_of(schema):
    key = next(key for key in schema["properties"] if key != "resp")
    return key, schema["properties"][key]


def document_lines(name, schema, file, rebuilt):
    key, payload = payload_of(schema)
    lines = ["", "### " + name, "", schema["description"], "",
             "Rebuilt: %s. Schema: [%s](schemas/%s)." % (rebuilt, file, file)]
    tables = object_lines(payload, key, [])
    if tables:
        return lines + tables
    source = source_words(payload.get("x-source", payload.get("items", {}).get("x-source", [])))
    what = [part["description"] for part in (payload, payload.get("items")) if part]
    return lines + ["", "`%s` (%s): %s%s" % (key, type_words(payload), " ".join(what),
                                             " From %s." % source if source else "")]


def page(docnames):
    seconds, rebuilt = schedule(docnames)
    schemas = validate.documents()
    grouped = [name for _, names in GROUPS for name in names]
    if set(rebuilt) != {name.removesuffix("/N") for name in schemas}:
        sys.exit("documents_md: not in both the table and the schemas: %s" %
                 sorted(set(rebuilt) ^ {name.removesuffix("/N") for name in schemas}))
    if sorted(grouped) != sorted(schemas):
        sys.exit("documents_md: not in both the groups and the schemas: %s" % sorted(set(grouped) ^ set(schemas)))
    head, body = HEAD % seconds, []
    for group, names in GROUPS:
        body += ["", "## " + group]
        for name in names:
            words = rebuilt[name.removesuffix("/N")]
            file = name.removesuffix("/N").replace("/", "_") + ".json"
            key, _ = payload_of(schemas[name])
            head += "| [%s](#%s) | `%s` | %s | %s |\n" % (name, anchor(name), key, words, schemas[name]["x-heading"])
            body += document_lines(name, schemas[name], file, words)
    return head + PORTS + "\n".join(body) + "\n"


def sources(node):
    if isinstance(node, dict):
        yield from node.get("x-source", [])
        for value in node.values():
            yield from sources(value)
    elif isinstance(node, list):
        for value in node:
            yield from sources(value)


def unused_sources():
    """Calls and show commands that a schema names and no source file does."""
    text = ""
    for folder, _, names in os.walk(os.path.join(HOME, "src")):
        for name in names:
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                text += file.read() if name.endswith(".cpp") else ""
    named = set(sources(validate.raw_schemas()))
    return sorted(source for source in named
                  if source.startswith("openapi") and not re.search(r"\b(rpcclt_)?%s\b" % source, text)
                  or source.startswith("show ") and '"%s"' % source not in text)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true", help="write nothing; status 1 when the page is out of date")
    built = sorted(glob.glob(os.path.join(HOME, "build", "*", "tools", "docnames")), key=os.path.getmtime)
    parser.add_argument("--docnames", default=built[-1] if built else "docnames",
                        help="the program that tells the table; default: the one built last")
    options = parser.parse_args()
    unused = unused_sources()
    if unused:
        sys.exit("documents_md: the daemon does not use: %s" % ", ".join(unused))
    for path, text in {PAGE: page(options.docnames), **dict(with_examples())}.items():
        with open(path, "r" if options.check else "r+", encoding="utf-8") as file:
            if file.read() == text:
                continue
            if options.check:
                sys.exit("%s is not what the schemas, the schedule and the goldens say; run tools/documents_md.py" %
                         os.path.relpath(path, HOME))
            file.seek(0)
            file.truncate()
            file.write(text)
    print("docs/documents.md agrees with %d schemas and the schedule" % len(validate.documents()))


if __name__ == "__main__":
    main()
