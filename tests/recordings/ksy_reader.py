"""Reads bytes by a description in the language of Kaitai Struct.

Understands as much of the language as the descriptions in formats/ use. What a description reads
becomes dictionaries, lists, numbers, bytes and, for enumerations, the names of values.
"""

import pathlib
import re
import struct

import yaml

NUMBERS = {"u1": "<B", "u2": "<H", "u4": "<I", "u8": "<Q", "s8": "<q", "f4": "<f", "f8": "<d"}


class Stream:
    """Bytes that are taken from front to back."""

    def __init__(self, data):
        self.data, self.place = data, 0

    def take(self, size):
        if not 0 <= size <= len(self.data) - self.place:
            raise ValueError("the bytes fall short")
        self.place += size
        return self.data[self.place - size:self.place]

    def at_end(self):
        return self.place == len(self.data)


def evaluate(expression, so_far):
    """A number, or a field that was read before, from which a number may be taken away."""
    if isinstance(expression, int):
        return expression
    name, less = re.fullmatch(r"(\w+)(?: - (\d+))?", expression).groups()
    return so_far[name] - int(less or 0)


class Format:
    """A description; `read` reads whole files by it."""

    def __init__(self, path):
        self.description = yaml.safe_load(pathlib.Path(path).read_text(encoding="utf-8"))

    def read(self, data):
        stream = Stream(data)
        result = self._sequence(self.description["seq"], stream)
        if not stream.at_end():
            raise ValueError("bytes are left over")
        return result

    def _sequence(self, fields, stream):
        result = {}
        for field in fields:
            result[field["id"]] = self._repeated(field, stream, result)
        return result

    def _repeated(self, field, stream, so_far):
        repeat = field.get("repeat")
        if repeat is None:
            return self._one(field, stream, so_far)
        values = []
        count = evaluate(field["repeat-expr"], so_far) if repeat == "expr" else None
        while len(values) < count if repeat == "expr" else not stream.at_end():
            values.append(self._one(field, stream, so_far))
        return values

    def _one(self, field, stream, so_far):
        if "contents" in field:
            return self._contents(field, stream)
        kind = self._kind(field.get("type"), so_far)
        if "size" in field:
            stream = Stream(stream.take(evaluate(field["size"], so_far)))
            if kind is None:
                return self._bytes(field, stream.data)
        if kind in NUMBERS:
            return self._number(field, kind, stream)
        value = self._sequence(self.description["types"][kind]["seq"], stream)
        if "size" in field and not stream.at_end():
            raise ValueError(f"{kind} leaves bytes over")
        return value

    @staticmethod
    def _contents(field, stream):
        expected = bytes(field["contents"])
        if stream.take(len(expected)) != expected:
            raise ValueError(f"{field['id']} is not {expected}")
        return expected

    @staticmethod
    def _bytes(field, data):
        if "terminator" in field:
            data = data.partition(bytes([field["terminator"]]))[0]
        return data

    def _kind(self, kind, so_far):
        """The name of a type, which may hang on a field that was read before."""
        if not isinstance(kind, dict):
            return kind
        value = so_far[kind["switch-on"]]
        for case, name in kind["cases"].items():
            if str(case).split("::")[-1] == str(value):
                return name
        return kind["cases"].get("_")

    def _number(self, field, kind, stream):
        number, = struct.unpack(NUMBERS[kind], stream.take(struct.calcsize(NUMBERS[kind])))
        if "enum" not in field:
            return number
        names = self.description["enums"][field["enum"]]
        if field.get("valid", {}).get("in-enum") and number not in names:
            raise ValueError(f"{field['id']} is {number:#x}")
        return names.get(number, number)
