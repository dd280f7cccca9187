#!/usr/bin/env python3
"""Replays a continuous run into both JSON writers and compares the documents of its flushes, parsed.

usage: continuous_json_test.py TOOL [SCHEMA]

The expected documents stand beside the recording. Of a .qmjson, the order of descriptions is open;
samples have their order. Each .qmjson is also checked against SCHEMA.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOL = pathlib.Path(sys.argv[1]).resolve()
SCHEMA = sys.argv[2] if len(sys.argv) > 2 else None
RECORDINGS = pathlib.Path(__file__).resolve().parent


def replay(writers):
    """The texts of the results by the names that the expected ones have."""
    with tempfile.TemporaryDirectory() as directory:
        subprocess.run([TOOL, "replay", RECORDINGS / "continuous.qmrec", "--continuous", "-r", writers,
                        "-o", "results/continuous"], cwd=directory, check=True,
                       env=os.environ | {"TMPDIR": directory})
        return {path.name: path.read_text(encoding="utf-8")
                for path in pathlib.Path(directory, "results").iterdir()}


def in_order(document):
    if "Metadata" in document:
        document["Metadata"].sort(key=lambda item: item["ID"])
    return document


class ContinuousResults(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.results = replay("qmjson,json")

    def test_each_flush_with_a_processor_makes_a_document_of_either_form(self):
        self.assertEqual(sorted(self.results), sorted(
            path.name for path in RECORDINGS.glob("continuous_?.*json")))

    def test_documents_tell_what_was_sampled_since_the_last(self):
        for name, text in self.results.items():
            with self.subTest(name):
                expected = json.loads((RECORDINGS / name).read_text(encoding="utf-8"))
                self.assertEqual(in_order(json.loads(text)), in_order(expected))

    def test_documents_have_no_line_end(self):
        for name, text in self.results.items():
            with self.subTest(name):
                self.assertEqual(text[-1], "}")

    @unittest.skipUnless(SCHEMA, "no schema can be checked here")
    def test_documents_fit_their_schema(self):
        import qmjson_schema
        for name, text in self.results.items():
            if name.endswith(".qmjson"):
                with self.subTest(name):
                    self.assertEqual(qmjson_schema.faults(json.loads(text), SCHEMA), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
