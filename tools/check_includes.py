#!/usr/bin/env python3
"""Checks who includes whom.

The rooms of the house and the arrows between them are told in ROOMS below. An include of one of our
own headers that follows no arrow is printed as FILE:LINE, and the exit status is 1.
"""

import pathlib
import re
import sys

HOST = "host/"
COMMON = "client/src/common/"
FRAME = "writers/writer_plugins.h"
MODEL, RECORDING, COLLECT = "qumetra/model/", "qumetra/recording/", "qumetra/collect/"
ACCESS, RUN, READERS, CLI = (
    "qumetra/access/", "qumetra/run/", "qumetra/readers/", "qumetra/cli/")
WRITERS = "writers/"

# A room and what it may include beside itself.
ROOMS = {
    HOST: [],
    COMMON: [HOST],
    MODEL: [HOST, COMMON],
    RECORDING: [HOST, COMMON, MODEL],
    ACCESS: [HOST, COMMON, MODEL],
    COLLECT: [HOST, COMMON, MODEL, RECORDING, ACCESS],
    # The host reaches writers as any host does: through the frame's public header.
    RUN: [HOST, COMMON, MODEL, RECORDING, FRAME],
    # Written from the formats alone: a reader that shares code with a writer proves nothing.
    READERS: [],
    CLI: [HOST, COMMON, MODEL, RECORDING, COLLECT, RUN, READERS],
}

# The units of writers/ that every writer may include, and the few that may include one another.
FRAME_UNITS = {"writer_plugins", "capability", "held_handle", "table_cells", "system_lookup",
               "without_exception", "output_handle"}
# What a sample means and how a value becomes text is the same in the results of these writers.
SAMPLE_UNITS = {"sample_reading", "data_text"}
SAMPLE_WRITERS = {"continuous_writer", "json_plugin_helper", "json_plugin", "qmjson_plugin",
                  "binarywriter_plugin"}
WRITER_PAIRS = {
    # The PHM form derives from the trace writer.
    ("phmwriter_text_plugin", "textwriter_plugin"),
    # The JSON pair has a shared base, which serves continuous mode too.
    ("qmjson_plugin", "json_plugin_helper"),
    ("json_plugin", "json_plugin_helper"),
    ("json_plugin_helper", "continuous_writer"),
}
# The one file that knows every writer: it makes them.
REGISTRY = "writers/writer_plugins.cpp"

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def writer_unit(path):
    """The unit of a file in writers/: its folder there, or its name without the ending."""
    return path[len(WRITERS):].split("/")[0].rsplit(".", 1)[0]


def writer_may_include(source, target):
    if target.startswith((HOST, COMMON)):
        return True
    if not target.startswith(WRITERS):
        return False
    own, other = writer_unit(source), writer_unit(target)
    return (source == REGISTRY or own == other or other in FRAME_UNITS
            or (other in SAMPLE_UNITS and own in SAMPLE_WRITERS | SAMPLE_UNITS)
            or (own, other) in WRITER_PAIRS)


def may_include(source, target):
    """Whether the file `source` may include the header `target`; both are paths from the root."""
    if source.startswith(WRITERS):
        return writer_may_include(source, target)
    for room, allowed in ROOMS.items():
        if source.startswith(room):
            return target.startswith((room, *allowed))
    # Tests, benchmarks and fuzz targets may look at anything.
    return True


def violations(root):
    """Yields (file, line number, header) for every include that follows no arrow."""
    for path in sorted(root.rglob("*")):
        source = path.relative_to(root).as_posix()
        if path.suffix not in (".h", ".cpp") or source.startswith("build"):
            continue
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if match and not may_include(source, match.group(1)):
                yield source, number, match.group(1)


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else __file__).resolve()
    if root.is_file():
        root = root.parent.parent
    found = list(violations(root))
    for source, number, header in found:
        print(f'{source}:{number}: must not include "{header}" (arrows: tools/check_includes.py)')
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
