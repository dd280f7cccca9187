#!/usr/bin/env python3
"""Packs texts of bytes: pairs of hexadecimal digits, and comments from "#" to the line's end.

usage: hex_text.py OUTPUT_DIRECTORY TEXT...      packs NAME.hex into OUTPUT_DIRECTORY/NAME
"""

import pathlib
import sys


def pack(path):
    lines = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
    return bytes.fromhex(" ".join(line.split("#")[0] for line in lines))


def main():
    directory = pathlib.Path(sys.argv[1])
    directory.mkdir(parents=True, exist_ok=True)
    for text in sys.argv[2:]:
        (directory / pathlib.Path(text).stem).write_bytes(pack(text))


if __name__ == "__main__":
    main()
