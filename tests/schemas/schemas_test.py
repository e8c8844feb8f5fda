#!/usr/bin/python3
"""The schemas of docs/schemas against the golden documents, and against what they must refuse.

A schema that allows too much finds no fault and gives generated types that are no help. So besides the goldens, which
must match, each is spoilt at every kind of place it has: a key too many, a key of the required ones missing, a value of
another type, a word that is none. Every spoilt document must be refused.
"""

import argparse
import copy
import os
import re
import subprocess
import sys

HOME = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
sys.path.insert(0, os.path.join(HOME, "tools"))
sys.dont_write_bytecode = True
import jsonschema  # noqa: E402
import validate  # noqa: E402

GOLDENS = os.path.join(HOME, "tests", "golden")
FREE = ("ProfileTemplate",)  # contents that the schemas leave to others
BASE = "https://devmgr.example/schemas/"
KEYWORDS = {"$schema", "$id", "$defs", "$ref", "title", "examples", "x-heading", "description", "type", "properties", "required", "items", "enum", "const",
            "minimum", "maximum", "minLength", "maxLength", "maxItems", "pattern", "dependentRequired",
            "additionalProperties", "x-api-name", "x-source"}
NOT_JSON_VALUES = {"integer": "1", "string": 1, "boolean": 1, "array": {}, "object": [], "null": "null"}


def schema_faults(name, schema, place):
    """Keywords that are none (a validator passes over them), objects that are open, values without a description."""
    faults = ["%s: %s: unknown keyword %s" % (name, place, key) for key in set(schema) - KEYWORDS]
    if not {"$ref", "type"} & set(schema) and name != "common":
        faults.append("%s: %s: of any type" % (name, place))
    if "$ref" in schema and set(schema) - {"$ref", "title", "description", "type", "required", "x-source"}:
        faults.append("%s: %s: what stands beside $ref would replace it" % (name, place))
    if schema.get("type") == "object" and schema.get("title") not in FREE:
        if schema.get("additionalProperties") is not False or "required" not in schema:
            faults.append("%s: %s: an open object" % (name, place))
    for group in ("properties", "$defs"):
        for key, below in schema.get(group, {}).items():
            if "description" not in below and "$ref" not in below:
                faults.append("%s: %s/%s: no description" % (name, place, key))
            faults += schema_faults(name, below, place + "/" + key)
    if "items" in schema:
        faults += schema_faults(name, schema["items"], place + "[]")
    return faults


def titles_in(schema):
    if isinstance(schema, dict):
        yield from [schema["title"]] if isinstance(schema.get("title"), str) else []
        for key, below in schema.items():
            yield from titles_in(below) if key != "examples" else ()
    elif isinstance(schema, list):
        for below in schema:
            yield from titles_in(below)


def type_faults(raw):
    """What a generator of types stumbles over: titles are names of types, no two alike; files are found by name and id."""
    titles = [title for schema in raw.values() for title in titles_in(schema)]
    faults = ["%s: two schemas of this title" % title for title in set(titles) if titles.count(title) > 1]
    faults += ["%s: a title that is no name of a type" % title for title in titles if not re.fullmatch("[A-Z][A-Za-z0-9]*", title)]
    faults += ["%s: not its $id" % name for name, schema in raw.items() if schema.get("$id") != BASE + name + ".json"]
    named = {schema["x-api-name"]: name + ".json" for name, schema in raw.items() if "x-api-name" in schema}
    return faults + ["index.json does not list the schemas by their names"] * (validate.index() != named)


def spoilt(document, schema):
    """(what was done, document) for each kind of place of a document; of a list the longest element stands for all."""
    yield from spoilt_at(document, schema, document, ())


def with_value(document, path, value):
    other = copy.deepcopy(document)
    node = other
    for step in path[:-1]:
        node = node[step]
    node[path[-1]] = value
    return other


def spoilt_at(document, schema, node, path):
    if schema.get("title") in FREE or not schema.get("type"):
        return
    kinds = schema["type"] if isinstance(schema["type"], list) else [schema["type"]]
    place = ".".join(str(step) for step in path)
    if path:
        yield place + ": another type", with_value(document, path, NOT_JSON_VALUES[kinds[0]])
    if path and ("enum" in schema or "pattern" in schema or "const" in schema) and kinds == ["string"]:
        yield place + ": no such word", with_value(document, path, "no such word")
    if isinstance(node, dict) and "properties" in schema:
        if path:
            yield place + ": a key too many", with_value(document, path, {**node, "unexpected": 1})
        for key in node:
            if path and key in schema["required"]:
                yield place + ": without " + key, with_value(document, path, {k: v for k, v in node.items() if k != key})
            yield from spoilt_at(document, schema["properties"][key], node[key], path + (key,))
    elif isinstance(node, list) and node:
        index = max(range(len(node)), key=lambda at: len(str(node[at])))
        yield from spoilt_at(document, schema["items"], node[index], path + (index,))


def refusals(checker, schemas, records):
    """(spoilt documents, those that were not refused)"""
    count, accepted = 0, []
    for place, api_name, data in records:
        schema = schemas.get(api_name) or schemas[validate.re.sub(r"/[0-9]+$", "/N", api_name)]
        validator = checker.validator(api_name)
        for what, document in spoilt(validate.parse(data), schema):
            count += 1
            if validator.is_valid(document):
                accepted.append("%s: %s: not refused" % (place, what))
    return count, accepted


def names_made(program):
    """API names of the daemon's table, as schemas name them."""
    rows = subprocess.run([program, "--rows"], check=True, capture_output=True, text=True).stdout.splitlines()
    return {row.split("\t")[0] + ("/N" if row.endswith("\tchunks") else "") for row in rows}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--docnames", required=True, help="the program that lists the documents of this build")
    options = parser.parse_args()
    schemas, checker, faults = validate.documents(), validate.Checker(), []

    for name, schema in validate.raw_schemas().items():
        faults += schema_faults(name, schema, "")
    faults += type_faults(validate.raw_schemas())
    for schema in schemas.values():
        jsonschema.Draft202012Validator.check_schema(schema)
    faults += ["%s: document or schema is missing" % name for name in names_made(options.docnames) ^ set(schemas)]

    records = validate.golden_records(GOLDENS)
    bad = validate.check(records, checker)
    small = [record for record in records if os.sep + "two-port" + os.sep in record[0]]
    count, accepted = refusals(checker, schemas, small)
    faults += accepted + ["only %d spoilt documents" % count] * (count < 500)
    for fault in faults:
        print(fault, file=sys.stderr)
    print("%d golden documents, %d do not match; %d spoilt ones, %d accepted" % (len(records), bad, count, len(accepted)))
    return 1 if bad or faults or not records else 0


if __name__ == "__main__":
    sys.exit(main())
