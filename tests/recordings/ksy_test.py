#!/usr/bin/env python3
"""Reads the expected binary results by formats/qmbin.ksy, and checks what comes out.

usage: ksy_test.py FORMAT

Understands as much of the description language as that format uses.
"""

import pathlib
import struct
import sys
import unittest

import yaml

import hex_text

FORMAT = yaml.safe_load(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
RECORDINGS = pathlib.Path(__file__).resolve().parent
NUMBERS = {"u1": "<B", "u2": "<H", "u4": "<I", "u8": "<Q", "f4": "<f"}


class Stream:
    def __init__(self, data):
        self.data, self.place = data, 0

    def take(self, size):
        if size > len(self.data) - self.place:
            raise ValueError("the bytes fall short")
        self.place += size
        return self.data[self.place - size:self.place]

    def at_end(self):
        return self.place == len(self.data)


def enum_of(switch):
    """The enumeration that the cases of a switch are written with."""
    return next(iter(switch["cases"])).split("::")[0]


def read_one(field, stream, so_far):
    kind = field.get("type")
    if isinstance(kind, dict):
        value = so_far[kind["switch-on"]]
        kind = kind["cases"][f"{enum_of(kind)}::{value}"]
    if "size" in field:
        stream = Stream(stream.take(so_far[field["size"]]))
        if kind is None:
            return stream.data
    if kind in NUMBERS:
        number, = struct.unpack(NUMBERS[kind], stream.take(struct.calcsize(NUMBERS[kind])))
        return FORMAT["enums"][field["enum"]][number] if "enum" in field else number
    value = read_sequence(FORMAT["types"][kind]["seq"], stream)
    if "size" in field and not stream.at_end():
        raise ValueError(f"{kind} leaves bytes over")
    return value


def read_sequence(fields, stream):
    result = {}
    for field in fields:
        repeat = field.get("repeat")
        if repeat == "eos":
            values = []
            while not stream.at_end():
                values.append(read_one(field, stream, result))
        elif repeat == "expr":
            values = [read_one(field, stream, result) for _ in range(result[field["repeat-expr"]])]
        else:
            values = read_one(field, stream, result)
        result[field["id"]] = values
    return result


def payloads(name, kind):
    data = hex_text.pack(RECORDINGS / f"{name}.hex")
    records = read_sequence(FORMAT["seq"], Stream(data))["records"]
    return [record["payload"] for record in records if record["type"] == kind]


class Description(unittest.TestCase):
    def test_texts_are_numbered_from_one(self):
        texts = payloads("bin_states", "text")
        self.assertEqual([text["index"] for text in texts], list(range(1, 25)))
        self.assertEqual(texts[22]["bytes"], b"Linux")

    def test_system_is_whole(self):
        system, = payloads("bin_states", "system")
        self.assertEqual([system[name] for name in (
            "first_timestamp", "last_timestamp", "duration_seconds", "high_frequency_mhz",
            "low_frequency_mhz", "cpu_frequency_mhz", "bus_frequency_mhz", "platform_id",
            "num_packages", "num_modules", "num_cores", "num_threads", "os_type", "os_name",
            "os_name_again")], [256, 8000256, 2, 2400, 800, 1600, 100, 5, 1, 0, 1, 2, 24, 23, 23])

    def test_descriptors_name_texts(self):
        self.assertEqual(payloads("bin_states", "descriptor"),
                         [{"index": 1, "attribute": 1, "name": 2},
                          {"index": 2, "attribute": 9, "name": 10}])

    def test_metrics_have_their_lists(self):
        first, second = payloads("bin_states", "metric")[:2]
        self.assertEqual(first["columns"], [{"entity": 8, "descriptor": 1},
                                            {"entity": 8, "descriptor": 2},
                                            {"entity": 0, "descriptor": 0}])
        self.assertEqual(second["metadata"], [13])

    def test_samples_have_their_values(self):
        samples = payloads("bin_states", "sample")
        self.assertEqual([(s["timestamp"], s["duration_microseconds"], s["metric_id"], s["name"],
                           s["descriptor"], s["value"]) for s in samples],
                         [(1000, 3, 1, 8, 1, 1.5), (1000, 3, 1, 8, 2, 2.5), (1000, 3, 2, 9, 2, -2),
                          (1000, 3, 2, 2, 1, 2.5), (1001, 1, 3, 8, 0, 1), (1002, 1, 258, 8, 0, 1)])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
