"""What a recording says of its samples."""

import json
import math
import struct
from collections import namedtuple

# Values are what the collectors gave: unsigned numbers; times and durations are in ticks.
Element = namedtuple("Element", "metric timestamp entity path state value duration")
Metric = namedtuple("Metric", "id name type")

SAMPLED_DELTA, SAMPLED_RESIDENCY = 0, 1


def narrow(number):
    """The nearest 32-bit float."""
    return struct.unpack("<f", struct.pack("<f", number))[0]


def refuse(constant):
    raise ValueError(f"{constant} is no JSON")


def load_json(text, **options):
    """Reads strict JSON: without NaN and infinities."""
    return json.loads(text, parse_constant=refuse, **options)


class Recording:
    """Reads the file NAME.qmrec of a collection."""

    def __init__(self, path):
        self.elements = []
        self.flushes = 0
        self.processes = {}
        self._named = {}
        self._metrics = {}
        self.first = self.last = self.ticks_per_microsecond = 0
        with open(path, encoding="utf-8") as lines:
            for line in lines:
                ((kind, record),) = load_json(line).items()
                getattr(self, "_" + kind, lambda record: None)(record)

    def _system(self, record):
        metadata = record["metadata"]
        self.first, self.last = metadata["firstTimestamp"], metadata["lastTimestamp"]
        self.ticks_per_microsecond = metadata["timestampFrequency"]

    def _entity(self, record):
        self._named[record["ref"]] = record

    _descriptor = _entity

    def _process(self, record):
        self.processes[record["ref"]] = record

    def _ended(self, record):
        self.processes[record["of"]]["endTime"] = record["endTime"]

    def _metric(self, record):
        self._metrics[record["ref"]] = Metric(record["metricId"], record["name"],
                                              record.get("type", SAMPLED_DELTA))

    def _flush(self, _):
        self.flushes += 1

    def _sample(self, record):
        metric = self._metrics[record["metric"]]
        for element in record["elements"]:
            entity = self._named[element["entity"]]
            self.elements.append(Element(
                metric, record["timestamp"], entity["name"], self._path(entity),
                self._named[element["descriptor"]]["name"],
                element["value"].get("uint", 0), element["duration"]))

    def _path(self, entity):
        parent = self._named.get(entity.get("parent"))
        return (self._path(parent) + "/" if parent else "") + entity["name"]

    # What the results make of ticks. A 32-bit float divides, and is widened.

    @property
    def scale(self):
        """Microseconds per tick."""
        return narrow(1.0 / self.ticks_per_microsecond)

    def value(self, element):
        """A residency is told in microseconds."""
        return element.value * (self.scale if element.metric.type == SAMPLED_RESIDENCY else 1.0)

    def microseconds(self, element):
        """The duration in whole microseconds, by double precision."""
        return math.trunc(element.duration * self.scale)
