#!/usr/bin/env python3
"""Replays a recording and compares each result with the file beside the recording, byte by byte.

usage: replay_and_compare.py TOOL RECORDING WRITER [OUTPUT_NAME]

The expected results of NAME.qmrec are all files NAME.* beside it. NAME.stdout is what the tool
prints; NAME.csv is the result OUTPUT_NAME.csv, and so on. OUTPUT_NAME is NAME unless it is given.
"""

import os
import pathlib
import subprocess
import sys
import tempfile


def difference(expected, actual):
    """Where two results part, told in lines; empty when they are equal."""
    if expected == actual:
        return ""
    old, new = expected.splitlines(keepends=True), actual.splitlines(keepends=True)
    for number, (want, got) in enumerate(zip(old, new), 1):
        if want != got:
            return f"line {number}: expected {want!r}, got {got!r}"
    return f"expected {len(old)} lines ({len(expected)} bytes), got {len(new)} ({len(actual)} bytes)"


def main():
    tool, recording, writer = sys.argv[1], pathlib.Path(sys.argv[2]).resolve(), sys.argv[3]
    output = sys.argv[4] if len(sys.argv) > 4 else recording.stem
    expected = [path for path in sorted(recording.parent.glob(recording.stem + ".*"))
                if path != recording]
    if not expected:
        print(f"{recording}: no expected result beside it")
        return 1
    failed = False
    with tempfile.TemporaryDirectory() as directory:
        run = subprocess.run([tool, "replay", str(recording), "-r", writer, "-o", output],
                             cwd=directory, capture_output=True,
                             env=os.environ | {"TMPDIR": directory}, check=False)
        if run.returncode != 0:
            print(f"{tool} ended with status {run.returncode}:\n{run.stderr.decode()}")
            return 1
        for path in expected:
            result = pathlib.Path(directory, output + path.suffix)
            if path.suffix == ".stdout":
                actual = run.stdout
            else:
                actual = result.read_bytes() if result.is_file() else b""
                if not result.is_file():
                    print(f"{result.name} was not written")
                    failed = True
            told = difference(path.read_bytes(), actual)
            if told:
                print(f"{path.name}: {told}")
                failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
