#!/usr/bin/env python3
"""Loads a replayed summary report by the code that docs/summary-csv.md shows, and checks numbers.

usage: summary_page_test.py TOOL RECORDING PAGE
"""

import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import textwrap
import unittest

TOOL, RECORDING, PAGE = sys.argv[1:4]


def function_from_page(name):
    """The function of that name as the page shows it, in an indented block."""
    text = pathlib.Path(PAGE).read_text(encoding="utf-8")
    match = re.search(rf"^( +)def {name}\(.*\n(?:(?:\1 +.*)?\n)+", text, re.MULTILINE)
    scope = {}
    exec("import csv, struct\n" + textwrap.dedent(match.group(0)), scope)
    return scope[name]


class SummaryPage(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        base = os.path.join(self.directory.name, "run")
        subprocess.run([TOOL, "replay", RECORDING, "-r", "sum", "-o", base], check=True,
                       env=os.environ | {"TMPDIR": self.directory.name})
        self.report = base + ".csv"

    def test_table_with_headers_loads_as_numbers(self):
        rows = function_from_page("load_table")(self.report, "Power (units = mW)", skip=1)
        self.assertEqual([row["Component"] for row in rows], ["CPU", "A longer name"])
        self.assertEqual(float(rows[0]["Pkg/C0 Average"]), 1500.5)
        self.assertEqual(float(rows[0]["Pkg/C0 Total"]), 9003)
        self.assertEqual(rows[0]["Pkg/C1 Average"], "")
        self.assertEqual(rows[0]["Pkg/C1 Total"], "Invalid")
        self.assertEqual([float(rows[1][f"Pkg/C{core} {field}"])
                          for field in ("Average", "Total") for core in (0, 1)], [1, 2, 3, 4])

    def test_comma_in_a_cell_is_not_escaped(self):
        rows = function_from_page("load_table")(self.report, "About")
        self.assertEqual(rows, [{"Key": "interval", "Value": "100 ms"}])

    def test_cells_of_an_interrupted_run_are_read_up_to_the_fill(self):
        path = os.path.join(self.directory.name, "_qmet_1.tmp")
        texts = ["Name", "", "12.5"]
        with open(path, "wb") as file:
            for text in texts:
                file.write(struct.pack("=i", len(text)) + text.encode())
            file.write(bytes(1000))
        self.assertEqual(list(function_from_page("cells")(path)), texts)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
