#!/usr/bin/env python3
"""Checks every .qmjson that other tests left in a directory against its schema.

usage: kept_qmjson_test.py DIRECTORY SCHEMA

A number that JSON lacks leaves its key without a value, which is no JSON; the tests of that say so in
their names. Bytes of a name that are no UTF-8 go into the document as they are, and are read as such.
"""

import json
import pathlib
import sys

import qmjson_schema

NO_JSON = "NumberThatJsonLacks"


def faults(path, schema):
    try:
        document = json.loads(path.read_text(encoding="utf-8", errors="surrogateescape"))
    except json.JSONDecodeError as error:
        return [] if NO_JSON in path.name else [f"no JSON: {error}"]
    if NO_JSON in path.name:
        return ["is JSON against its name"]
    return qmjson_schema.faults(document, schema)


def main():
    paths = sorted(pathlib.Path(sys.argv[1]).glob("*.qmjson"))
    found = [f"{path}: {fault}" for path in paths for fault in faults(path, sys.argv[2])]
    print("\n".join([*found, f"{len(paths)} documents, {len(found)} faults"]))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
