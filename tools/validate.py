#!/usr/bin/python3
"""Validate documents of the REST cache against docs/schemas.

Given a cache database (--db FILE) or folders of golden documents, every record is parsed strictly (UTF-8, no key twice)
and compared with the schema of its API name. One line per mistake; status 0 only when all records match.
"""

import argparse
import json
import os
import re
import sqlite3
import sys
from urllib.parse import unquote

import jsonschema

SCHEMA_FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "docs", "schemas")
SHARED = ("common", "resp")  # no documents of their own
INDEX = "index.json"         # names them all
MISTAKES_SHOWN = 5           # of one record
CHECKSUM_ONLY = re.compile(rb"[0-9]+ bytes, FNV-1a [0-9a-f]+\n")  # golden of a text too large to keep


def raw_schemas(folder=SCHEMA_FOLDER):
    """File name without its ending -> the schema as it stands."""
    schemas = {}
    for name in sorted(set(os.listdir(folder)) - {INDEX}):
        with open(os.path.join(folder, name), encoding="utf-8") as file:
            schemas[name.removesuffix(".json")] = json.load(file)
    return schemas


def index(folder=SCHEMA_FOLDER):
    """API name -> file of its schema. A document written in records "name/0", "name/1" is "name/N"."""
    with open(os.path.join(folder, INDEX), encoding="utf-8") as file:
        return {name: schema["$ref"] for name, schema in json.load(file)["properties"].items()}


def resolved(node, file, raw):
    """A schema with its references put in place, so that no resolver is needed. What stands beside a reference adds to
    it: texts replace those of the target, lists of required keys are joined."""
    if isinstance(node, list):
        return [resolved(item, file, raw) for item in node]
    if not isinstance(node, dict):
        return node
    beside = {key: resolved(value, file, raw) for key, value in node.items() if key not in ("$ref", "$defs", "$id", "examples")}
    if "$ref" not in node:
        return beside
    path, _, pointer = node["$ref"].partition("#")
    target_file = path.removesuffix(".json") or file
    target = raw[target_file]
    for step in pointer.split("/")[1:]:
        target = target[step]
    target = resolved(target, target_file, raw)
    required = target.get("required", []) + beside.get("required", [])
    return {**target, **beside, **({"required": required} if required else {})}


def documents(folder=SCHEMA_FOLDER):
    """API name -> its schema, references resolved. A document written in records "name/0", "name/1" is "name/N"."""
    raw = raw_schemas(folder)
    return {schema["x-api-name"]: resolved(schema, file, raw) for file, schema in raw.items() if file not in SHARED}


def unique_keys(pairs):
    keys = dict(pairs)
    if len(keys) != len(pairs):
        raise ValueError("a key stands twice in one object")
    return keys


def no_constant(word):
    raise ValueError(word + " is not JSON")


def parse(data):
    return json.loads(data.decode("utf-8"), object_pairs_hook=unique_keys, parse_constant=no_constant)


class Checker:
    def __init__(self, folder=SCHEMA_FOLDER):
        self.validators = {name: jsonschema.Draft202012Validator(schema) for name, schema in documents(folder).items()}

    def validator(self, api_name):
        return self.validators.get(api_name) or self.validators.get(re.sub(r"/[0-9]+$", "/N", api_name))

    def mistakes(self, api_name, data):
        """Lines that say what is wrong with a record; none for one that matches."""
        validator = self.validator(api_name)
        if validator is None:
            return ["no schema for this name"]
        try:
            document = parse(data)
        except ValueError as error:
            return ["not JSON: %s" % error]
        return ["%s: %s" % (error.json_path, error.message[:200]) for error in validator.iter_errors(document)]


def database_records(path):
    database = sqlite3.connect("file:%s?mode=ro" % path, uri=True, timeout=60)
    database.text_factory = bytes
    try:
        rows = database.execute("SELECT api_name, data FROM restapi_db ORDER BY api_name").fetchall()
    finally:
        database.close()
    return [(name.decode(), name.decode(), data) for name, data in rows]


def golden_records(folder):
    records = []
    for path, folders, names in os.walk(folder):
        folders[:] = sorted(name for name in folders if name != "faults")  # these hold what faults change, as text
        for name in sorted(names):
            with open(os.path.join(path, name), "rb") as file:
                data = file.read()
            if not CHECKSUM_ONLY.fullmatch(data):
                records.append((os.path.join(path, name), unquote(name.removesuffix(".json")), data))
    return records


def check(records, checker):
    """Number of records that do not match; each mistake is reported."""
    bad = 0
    for place, api_name, data in records:
        mistakes = checker.mistakes(api_name, data)
        bad += bool(mistakes)
        for line in mistakes[:MISTAKES_SHOWN]:
            print("%s: %s" % (place, line), file=sys.stderr)
        if len(mistakes) > MISTAKES_SHOWN:
            print("%s: and %d more" % (place, len(mistakes) - MISTAKES_SHOWN), file=sys.stderr)
    return bad


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--db", help="cache database, for example /tmp/restapi_db")
    parser.add_argument("folders", nargs="*", help="folders of golden documents")
    options = parser.parse_args()
    records = database_records(options.db) if options.db else []
    for folder in options.folders:
        records += golden_records(folder)
    if not records:
        sys.exit("validate: no documents")
    bad = check(records, Checker())
    if bad:
        sys.exit("validate: %d of %d documents do not match their schemas" % (bad, len(records)))
    print("%d documents match their schemas" % len(records))


if __name__ == "__main__":
    main()
