#!/usr/bin/env python3
"""Replays a recording into a JSON writer and compares the document with the one beside it, parsed.

usage: json_result_test.py TOOL RECORDING WRITER [SCHEMA]

The order of what stands under names, and of the events of a trace, is left open and not compared.
The process and thread in a trace are those of the replay: they must be the same numbers in all
events. A document is also checked against SCHEMA.
"""

import json
import pathlib
import subprocess
import sys
import tempfile


def without_origin(document, faults):
    """The events of a trace in an order of their own, without process and thread."""
    origins = {(event.pop("pid", None), event.pop("tid", None))
               for event in document["traceEvents"]}
    if any(not isinstance(number, int) for origin in origins for number in origin):
        faults.append(f"events without process or thread: {origins}")
    if len(origins) > 1:
        faults.append(f"events of several origins: {origins}")
    return sorted(json.dumps(event, sort_keys=True) for event in document["traceEvents"])


def main():
    tool, recording, writer = sys.argv[1], pathlib.Path(sys.argv[2]).resolve(), sys.argv[3]
    expected = json.loads(recording.with_suffix("." + writer).read_text(encoding="utf-8"))
    faults = []
    with tempfile.TemporaryDirectory() as directory:
        subprocess.run([tool, "replay", str(recording), "-r", writer, "-o", "run"], cwd=directory,
                       check=True)
        text = pathlib.Path(directory, "run." + writer).read_text(encoding="utf-8")
    actual = json.loads(text)
    if not text.endswith("}\n"):
        faults.append("no line end behind the document")
    if len(sys.argv) > 4:
        # Only here: the check needs a package that not every machine has.
        import qmjson_schema
        faults += qmjson_schema.faults(actual, sys.argv[4])
    if "traceEvents" in actual:
        actual = without_origin(actual, faults)
        expected = without_origin(expected, []) if expected["traceEvents"] else []
    if actual != expected:
        faults.append(f"expected {json.dumps(expected, indent=1)}\ngot {json.dumps(actual, indent=1)}")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
