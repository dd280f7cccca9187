#!/usr/bin/env python3
"""The schema of .qmjson takes good documents and refuses wrong ones.

usage: qmjson_schema_test.py SCHEMA
"""

import copy
import json
import pathlib
import sys
import unittest

import qmjson_schema

SCHEMA = pathlib.Path(sys.argv[1])
RECORDINGS = pathlib.Path(__file__).resolve().parent
METRIC = 'data/Idle "States"/'


def at(document, path):
    """The object or list that holds the last name of a path, and that name."""
    *way, last = path.split("/")
    for name in way:
        document = document[int(name) if isinstance(document, list) else name]
    return document, int(last) if isinstance(document, list) else last


def with_value(document, path, value):
    changed = copy.deepcopy(document)
    holder, name = at(changed, path)
    holder[name] = value
    return changed


def without(document, path):
    changed = copy.deepcopy(document)
    holder, name = at(changed, path)
    del holder[name]
    return changed


class Schema(unittest.TestCase):
    def load(self, name):
        document = json.loads((RECORDINGS / name).read_text(encoding="utf-8"))
        self.assertEqual(qmjson_schema.faults(document, SCHEMA), [])
        return document

    def refuse(self, document):
        self.assertNotEqual(qmjson_schema.faults(document, SCHEMA), [])

    def test_schema_is_one(self):
        qmjson_schema.jsonschema.Draft7Validator.check_schema(
            json.loads(SCHEMA.read_text(encoding="utf-8")))

    def test_missing_members_are_refused(self):
        result = self.load("qmjson_states.qmjson")
        points = METRIC + "data/Core 0/points"
        for path in ("version", "data", "systemMetaData/os/OS Type", METRIC + "metaData",
                     METRIC + "metaData/states", METRIC + "metaData/units",
                     METRIC + "metaData/altUnits/0/conversion", METRIC + "data/Core 0/friendlyName",
                     points, points + "/0/x1", points + "/0/y"):
            with self.subTest(path):
                self.refuse(without(result, path))

    def test_unknown_members_are_refused(self):
        result = self.load("qmjson_states.qmjson")
        for path in ("more", "systemMetaData/platform/Plaform Name", METRIC + "metaData/unit",
                     METRIC + "data/Core 0/points/0/y1"):
            with self.subTest(path):
                self.refuse(with_value(result, path, 1))

    def test_wrong_values_are_refused(self):
        result = self.load("qmjson_states.qmjson")
        meta, points = METRIC + "metaData", METRIC + "data/Core 0/points"
        for path, value in (
                ("fileType", "Qumetra"), ("version/major", 2),
                ("systemMetaData/platform/Num Cores", -1),
                ("systemMetaData/qumetra/Qumetra Version", "1.2"),
                ("systemMetaData/qumetra/Collection Command Line", "-t 1"),
                ("systemMetaData/qumetra/Collection Stop Timestamp", 2**64),
                (meta + "/type", "SAMPLED"), (meta + "/type", "SAMPLED_DELTA"),
                (meta + "/states", ["C2", "C2"]), (meta + "/altUnits/1/isCalculatedRate", False),
                (meta + "/altUnits/0/conversion", 2), (meta + "/altUnits", []),
                (points, []), (points + "/0/x", 0.5), (points + "/0/y", "300"),
                (points + "/0/y", 300), (points + "/0/y", {"C3": 300}), (points + "/0/y", {})):
            with self.subTest(path, value=value):
                self.refuse(with_value(result, path, value))

    def test_wrong_flushes_are_refused(self):
        flush = self.load("continuous_0.qmjson")
        for path in ("Metadata", "Data", "Metadata/3", "Metadata/0/Quantity/Units",
                     "Metadata/3/Platform/Plaform Name", "Metadata/3/OS", "Data/0/State"):
            with self.subTest(path):
                self.refuse(without(flush, path))
        for path, value in (
                ("Metadata/0/Type", "IDLE"), ("Metadata/0/States", ["deep"]),
                ("Metadata/1/Entity-Descriptor-Combinations", [{"Entity": "Package"}]),
                ("Metadata/3/Platform/Platform Name", "Board"), ("Metadata/3/ID", 1),
                ("Metadata/3/Platform/Num Cores", 2), ("Data/0/ID", 2**31),
                ("Data/0/Timestamp", -1), ("Data/0/Value", "1"), ("Data/0/More", 1)):
            with self.subTest(path, value=value):
                self.refuse(with_value(flush, path, value))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
