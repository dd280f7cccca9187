#!/usr/bin/env python3
"""Reads expected import streams by the code that docs/pwr.md shows, and checks its example.

usage: pwr_page_test.py PAGE
"""

import pathlib
import re
import sys
import tempfile
import textwrap
import unittest

import hex_text

PAGE = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
RECORDINGS = pathlib.Path(__file__).resolve().parent


def block_behind(heading):
    """The indented lines of a section."""
    section = PAGE.split(f"\n## {heading}\n")[1].split("\n## ")[0]
    return textwrap.dedent("\n".join(line for line in section.splitlines()
                                     if line.startswith("    ") or not line))


class ImportStreamPage(unittest.TestCase):
    def samples(self, name):
        scope = {}
        exec(block_behind("Reading it"), scope)
        with tempfile.TemporaryDirectory() as directory:
            path = pathlib.Path(directory, "run.pwr")
            path.write_bytes(hex_text.pack(RECORDINGS / f"{name}.pwr.hex"))
            return list(scope["samples"](path))

    def test_code_reads_states_with_their_names(self):
        self.assertEqual(self.samples("kelto_residency"), [
            (2000, "Core C-State Residency", "Core_4", "C0", 900, [(10, 700)]),
            (2000, "Core C-State Residency", "Core_4", "C6", 100, [(10, 300)]),
            (3000, "Core C-State Residency", "Core_4", "C6", 1000, [(10, 1000)]),
            (2000, "Package Temperature", "Package_0", "NA", 0, [(9, 45)]),
            (3000, "Package Temperature", "Package_0", "NA", 5, [(11, 45.5)])])

    def test_code_reads_ranges_and_leaves_out_what_belongs_to_the_entity(self):
        self.assertEqual(self.samples("kelto_traced")[1:], [
            (2500, "Memory States", "CPU0", "C6", 0, [(12, -2), (13, 5)]),
            (2600, "Wakeups", "CPU0", "C6", 0, [(10, 1)])])

    def test_code_passes_over_wakelocks(self):
        self.assertEqual(self.samples("kelto_wakelocks"), [])

    def test_example_is_the_end_of_a_stream(self):
        lines = block_behind("An example").splitlines()
        digits = "".join(re.match(r"((?:[0-9a-f]{2} {1,2})*)", line).group(1) for line in lines)
        data = bytes.fromhex(digits)
        self.assertEqual(len(data), 59 + 118)
        self.assertTrue(hex_text.pack(RECORDINGS / "kelto_traced.pwr.hex").endswith(data))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
