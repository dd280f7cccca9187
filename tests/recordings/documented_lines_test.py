"""The lines by which docs/ reads the over-time tables do what they say.

Each line is taken from its page and run on the expected result of a recording. The tests need
nothing beside Python, so a small reader on its csv module stands in for pandas.
"""

import csv
import os
import pathlib
import shutil
import tempfile
import types
import unittest

HERE = pathlib.Path(__file__).resolve().parent
DOCS = HERE.parents[1] / "docs"


def read_csv(file, skiprows=0, skipinitialspace=False):
    """The rows of a table as dictionaries; numbers as such."""
    for _ in range(skiprows):
        next(file)
    reader = csv.DictReader(file, skipinitialspace=skipinitialspace, strict=True)
    return [{name: convert(text) for name, text in row.items()} for row in reader]


def convert(text):
    try:
        return float(text)
    except (TypeError, ValueError):
        return text


def documented_lines(page):
    """The two lines behind "Reading it": the imports without pandas, and the reading."""
    lines = (DOCS / page).read_text(encoding="utf-8").split("## Reading it")[1].splitlines()
    code = [line.strip() for line in lines if line.startswith("    ")]
    assert len(code) == 2 and code[0] == "import io, pathlib, pandas", code
    return ["import io, pathlib", code[1]]


class DocumentedLines(unittest.TestCase):
    def read(self, page, result, name):
        """Runs the lines of `page` where the result has the `name` that they speak of."""
        scope = {"pandas": types.SimpleNamespace(read_csv=read_csv)}
        former = os.getcwd()
        with tempfile.TemporaryDirectory() as directory:
            shutil.copy(HERE / result, pathlib.Path(directory, name))
            os.chdir(directory)
            try:
                exec("\n".join(documented_lines(page)), scope)
            finally:
                os.chdir(former)
        return scope["table"]

    def test_the_line_of_the_trace_page_reads_a_table(self):
        table = self.read("trace-csv.md", "int_calculations_trace.csv", "run_trace.csv")
        self.assertEqual(list(table[0]),
                         ["Sample #", "Continuous Time (usec)", "Duration (ms)", "C1 (mJ)"])
        self.assertEqual([row["Sample #"] for row in table], [1, 2, 3, 4])
        self.assertEqual([row["Continuous Time (usec)"] for row in table],
                         [100000, 200000, 200000, 300000])
        self.assertEqual([row["C1 (mJ)"] for row in table], [250, 1e9, 5, 0])

    def test_the_line_of_the_phm_page_reads_a_table(self):
        table = self.read("phm-csv.md", "phm_layout_phm.csv", "run_phm.csv")
        self.assertEqual(list(table[0]), ["Sample #", "Continuous Time (usec)", "Duration (ms)", "",
                                          "Package0/Core1 C1"])
        self.assertEqual([row[""] for row in table], [41.5, 7])
        self.assertEqual([row["Package0/Core1 C1"] for row in table], ["n/a", 1.5])


if __name__ == "__main__":
    unittest.main()
