#!/usr/bin/env python3
"""Reads raw text as docs/raw-text.md tells, and checks what comes out.

usage: raw_text_test.py TOOL PAGE
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import textwrap
import unittest

TOOL, PAGE = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
RECORDINGS = pathlib.Path(__file__).resolve().parent


def page_functions():
    """What the indented piece of Python below "Loading a table in Python" defines."""
    text = PAGE.read_text(encoding="utf-8").split("## Loading a table in Python")[1]
    code = re.search(r"\n\n((?:(?:    .*)?\n)+)", text).group(1)
    names = {}
    exec(textwrap.dedent(code), names)
    return names


class Result(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.path = pathlib.Path(directory.name, "run.txt")

    def replay(self, recording):
        subprocess.run([TOOL, "replay", RECORDINGS / recording, "-r", "raw", "-o", "run"],
                       cwd=self.path.parent, check=True)

    def load(self, title):
        return page_functions()["load_table"](self.path, title)

    def test_csv_module_gives_the_numbers(self):
        self.replay("raw_temperature.qmrec")
        rows = self.load("CPU Temperature")
        self.assertEqual([int(row["Timestamp"]) for row in rows], [1000, 2000, 3000, 4000])
        column = [row["Package_0/CPU1 (C)"] for row in rows]
        self.assertEqual(column[0], "N/A")
        self.assertEqual([float(text) for text in column[1:3]], [40, 0.123457])

    def test_tables_of_shared_titles_and_ids_are_whole_in_any_order(self):
        self.replay("raw_shared_ids.qmrec")
        expected = RECORDINGS / "raw_shared_ids.txt"
        self.assertEqual(sorted(self.path.read_bytes().split(b"\n\n")),
                         sorted(expected.read_bytes().split(b"\n\n")))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
