"""Reads the records of an import stream that the tests ask for."""

import pathlib
import struct
from collections import namedtuple

Node = namedtuple("Node", "kind long short value uid parent")
Process = namedtuple("Process", "pid time name")
Sample = namedtuple("Sample", "timestamp attributes")

HEADER, GENERAL, WAKELOCK, PROCESS, THREAD = (
    0x02400000, 0x02400010, 0x02400018, 0x0240001D, 0x0200001D)
MAGIC, HEAD_MARKER = 0x08000000, 0x22000020
# Where the size field of a record is.
SIZE_AT = {HEADER: 4, GENERAL: 12, WAKELOCK: 20, PROCESS: 28}
WHOLE_SIZE = {MAGIC: 8, HEAD_MARKER: 25, THREAD: 28}

INFO, METRIC, ENTITY, FIELD, PROCESS_ID, COLOR = 8, 0, 1, 2, 3, 7


class PwrFile:
    def __init__(self, path):
        self.nodes, self.processes, self.samples = [], [], []
        data = pathlib.Path(path).read_bytes()
        at = 0
        while at < len(data):
            at += self._record(data, at)
        assert at == len(data), "the last record is cut"

    def _record(self, data, at):
        word = struct.unpack_from("<I", data, at)[0]
        if word in WHOLE_SIZE:
            return WHOLE_SIZE[word]
        size = SIZE_AT[word] + struct.unpack_from("<H", data, at + SIZE_AT[word])[0]
        record = data[at:at + size]
        if word == PROCESS:
            pid, time = struct.unpack_from("<I4xQ", record, 12)
            self.processes.append(Process(pid, time, record[32:-1].decode()))
        elif word == GENERAL and struct.unpack_from("<2H", record, 14) == (72, 7):
            self.nodes.append(node(record))
        elif word == GENERAL and struct.unpack_from("<2H", record, 14) == (71, 6):
            count = struct.unpack_from("<H", record, 20)[0]
            self.samples.append(Sample(
                struct.unpack_from("<Q", record, 4)[0],
                [struct.unpack_from("<IQ", record, 22 + 12 * i) for i in range(count)]))
        return size

    def named(self, kind):
        """The nodes of a kind by their short names."""
        return {node.short: node for node in self.nodes if node.kind == kind}


def node(record):
    value, parent, uid = struct.unpack_from("<3I", record, 24)
    texts, at = [], 44
    for length in struct.unpack_from("<4H", record, 36):
        texts.append(record[at:at + length].decode())
        at += length
    return Node(texts[2], texts[0], texts[1], value, uid, parent)
