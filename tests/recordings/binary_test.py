#!/usr/bin/env python3
"""Replays recordings into the binary writer and compares with the texts of bytes beside them.

usage: binary_test.py TOOL
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import hex_text

TOOL = pathlib.Path(sys.argv[1]).resolve()
RECORDINGS = pathlib.Path(__file__).resolve().parent


class BinaryResult(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)

    def tool(self, *arguments):
        run = subprocess.run([TOOL, *arguments], cwd=self.directory, capture_output=True, text=True,
                             env=os.environ | {"TMPDIR": str(self.directory)}, check=False)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return run.stdout

    def replay(self, name, *options):
        """The results of NAME.qmrec by their names."""
        self.tool("replay", RECORDINGS / f"{name}.qmrec", "-r", "bin", "-o", name, *options)
        return {path.stem: path.read_bytes().hex(" ") for path in self.directory.glob("*.qmbin")}

    def expected(self, *names):
        return {name: hex_text.pack(RECORDINGS / f"{name}.hex").hex(" ") for name in names}

    def test_states_of_every_kind(self):
        self.assertEqual(self.replay("bin_states"), self.expected("bin_states"))

    def test_series_tells_each_name_once(self):
        self.assertEqual(self.replay("bin_series", "--continuous"),
                         self.expected("bin_series_0", "bin_series_1"))

    def test_dump_says_what_the_recording_said(self):
        self.replay("bin_states")
        lines = self.tool("dump", "bin_states.qmbin", "--json").splitlines()
        samples = [json.loads(line)["sample"] for line in lines if line.startswith('{"sample"')]
        self.assertEqual(
            [(s["timestamp"], s["metricId"], s["name"], s.get("descriptor"), s["value"],
              s["durationMicroseconds"]) for s in samples],
            [(1000, 1, "Core", 1, 1.5, 3), (1000, 1, "Core", 2, 2.5, 3), (1000, 2, "6", 2, -2, 3),
             (1000, 2, "C1", 1, 2.5, 3), (1001, 3, "Core", None, 1, 1),
             (1002, 258, "Core", None, 1, 1)])

    def test_series_is_checked_in_order(self):
        self.replay("bin_series", "--continuous")
        told = self.tool("check", "bin_series_0.qmbin", "bin_series_1.qmbin")
        self.assertEqual(
            told,
            "bin_series_0.qmbin: 4 texts, 0 system records, 0 descriptors, 1 metrics, 1 samples, "
            "0 faults\n"
            "bin_series_1.qmbin: 1 texts, 0 system records, 0 descriptors, 0 metrics, 2 samples, "
            "0 faults\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
