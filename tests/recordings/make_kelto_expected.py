#!/usr/bin/env python3
"""Writes NAME.pwr.hex, the expected import stream of each kelto recording here.

The records of each stream are listed by hand, with uids in the order in which they are drawn; this
program only packs their fields. It shares nothing with the writer.

usage: make_kelto_expected.py DIRECTORY
"""

import pathlib
import struct
import sys

UID = 0x60000000  # The first id that is drawn at run time.
NONE = 0xFFFFFFFF


class Stream:
    def __init__(self):
        self.lines = []

    def record(self, title, *fields):
        """A record of (bytes, meaning) pairs."""
        self.lines.append(f"# {title}")
        for data, meaning in fields:
            self.lines.append(f"{data.hex(' ')}  # {meaning}")

    def magic(self):
        self.record("magic", (bytes.fromhex("00000008fadedead"), "magic"))

    def collection(self, major, minor, patch):
        self.record("collection",
                    (bytes.fromhex("00004002"), "first word"), u16(30, "size"), u16(44, "type"),
                    u32(1, "1"), u16(major, "major"), u16(minor, "minor"), u32(patch, "patch"),
                    (bytes.fromhex("0000000000080000"), "fixed"), (b"\x05power", "name"))

    def system(self, kind, version, host, platform, name):
        texts = [(struct.pack("<H", len(text) + 1) + text.encode() + b"\0", repr(text))
                 for text in (host, platform, name)]
        size = 30 + len(host) + len(platform) + len(name)
        self.record("system", (bytes.fromhex("00004002"), "first word"), u16(size, "size"),
                    u16(45, "type"), u16(1, "1"), u16(0, "0"), u16(kind, "kind"),
                    (struct.pack("<4H", *version), "version"), *texts, u16(1, "1"), (b"\0", "empty"))

    def hardware(self, hertz, limit, width, family, model, stepping, threads):
        self.record("hardware", (bytes.fromhex("00004002"), "first word"),
                    u16(40 + 4 * len(threads), "size"), u16(18, "type"), u32(1, "1"),
                    u64(hertz, "frequency"), u64(hertz, "frequency"), u64(limit, "highest address"),
                    (bytes([width, family, model, stepping]), "width, family, model, stepping"),
                    u32(len(threads), "threads"),
                    *[(bytes([0, *thread]), "package, core, index") for thread in threads])

    def marker(self, start, resolution):
        self.record("head marker", (bytes.fromhex("200000222000000202"), "fixed"),
                    u64(start, "start"), u64(resolution, "resolution"))

    def threshold(self, megahertz):
        self.record("power threshold", (bytes.fromhex("00004002"), "first word"), u16(62, "size"),
                    u16(63, "type"), u32(1, "1"), u16(12, "12"), (bytes(48), "zero"),
                    u32(megahertz, "MHz"))

    def node(self, kind, kind_id, long, short, description, value, uid, parent=NONE):
        text = long + short + kind + description
        self.record(f"{kind} {long!r}", (bytes.fromhex("10004002") + bytes(8), "first word, tsc"),
                    u16(len(text) + 33, "size"), (struct.pack("<3H", 72, 7, 2), "type, version"),
                    u32(kind_id, "kind"), u32(value, "value"), u32(parent, "parent"), u32(uid, "uid"),
                    (struct.pack("<4H", len(long), len(short), len(kind), len(description)),
                     "lengths"), (text.encode() + b"\0", "text"))

    def kind(self, name, number, uid):
        self.node("info_type", 0, name, name, "info_type_id", number, uid)

    def header_nodes(self):
        self.kind("metric_type", 1, UID)
        for i, (long, short) in enumerate([
                ("Sampled Finite Set Counter", "SFSC"), ("Sampled Value", "SV"),
                ("Sampled Finite Set Value", "SFSV"), ("Traced Finite Set Counter", "TFSC"),
                ("Sampled Counter", "SC"), ("Traced Event", "TE")]):
            self.node("metric_type", 1, long, short, "metric_type_id", 4 + i, UID + 1 + i)

    def metric(self, kind, metric_id, quantity, tab, timeline, name):
        text = name + name
        self.record(f"metric {name!r}", (bytes.fromhex("10004002") + bytes(8), "first word, tsc"),
                    u16(len(text) + 33, "size"), (struct.pack("<3H", 72, 8, 2), "type, version"),
                    u32(kind, "metric type"), u32(metric_id, "metric"), u32(quantity, "quantity"),
                    u32(tab, "tab"), u32(timeline, "time-line"),
                    (struct.pack("<2H", len(name), len(name)), "lengths"),
                    (text.encode() + b"\0", "text"))

    def sample(self, tsc, *attributes):
        names = ["METRIC", "ENTITY", "FIELD", "PROCESS", "THREAD", "", "QUANTITY", "COLOR", "INFO",
                 "INT", "UINT", "REAL", "INT_LOWER_BOUND", "INT_UPPER_BOUND", "", "", "", "",
                 "DURATION"]
        packed = [(struct.pack("<I", names.index(name)) +
                   struct.pack("<d" if isinstance(value, float) else "<q", value), name)
                  for name, value in attributes]
        self.record("sample", (bytes.fromhex("10004002"), "first word"), u64(tsc, "tsc"),
                    u16(10 + 12 * len(attributes), "size"),
                    (struct.pack("<3H", 71, 6, 2), "type, version"), u16(len(attributes), "count"),
                    *packed)

    def process(self, pid, time, path):
        self.record("process", (bytes.fromhex("1d004002"), "first word"),
                    (struct.pack("<4I", 0x1000, 0, pid, 0), "event, 0, pid, 0"), u64(time, "time"),
                    u16(len(path) + 5, "size"), u16(0, "type"), (path.encode() + b"\0", "path"))

    def thread(self, event, pid, tid, time):
        self.record("thread", (bytes.fromhex("1d000002"), "first word"),
                    (struct.pack("<4I", event, 0, pid, tid), "event, 0, pid, tid"),
                    u64(time, "time"))

    def kernel(self, tsc, action, timeout, name):
        self.record("kernel wakelock", (bytes.fromhex("18004002") + bytes(8), "first word, 0, 0"),
                    u64(tsc, "tsc"), u16(len(name) + 16, "size"), u16(64, "type"),
                    (bytes([action]), "action"), u64(timeout, "timeout"),
                    u16(len(name) + 1, "length"), (name.encode() + b"\0", "name"))

    def user(self, tsc, pid, tid, action, flag, uid, name):
        self.record("user wakelock", (bytes.fromhex("18004002"), "first word"), u32(tid, "tid"),
                    u32(pid, "pid"), u64(tsc, "tsc"), u16(len(name) + 17, "size"), u16(67, "type"),
                    (bytes([action, flag]), "action, flag"), u32(uid, "uid"), u32(0, "0"),
                    u16(len(name) + 1, "length"), (name.encode() + b"\0", "name"))

    def package(self, tsc, uid, name):
        self.record("package", (bytes.fromhex("10004002"), "first word"), u64(tsc, "tsc"),
                    u16(len(name) + 11, "size"), u16(68, "type"), u32(uid, "uid"),
                    u16(len(name) + 1, "length"), (name.encode() + b"\0", "name"))


def u16(value, meaning):
    return struct.pack("<H", value), meaning


def u32(value, meaning):
    return struct.pack("<I", value), meaning


def u64(value, meaning):
    return struct.pack("<Q", value), meaning


def residency():
    s = Stream()
    s.magic()
    s.collection(2025, 6, 21)
    s.system(5, (6, 1, 0, 0), "host", "Plat", "Linux")
    s.hardware(2_500_000_000, 2**64 - 1, 64, 6, 151, 2, [(0, 4, 0), (0, 4, 1), (0, 8, 0)])
    s.marker(1000, 10_000)
    s.threshold(3600)
    s.header_nodes()  # uids up to 6
    # Core C-State Residency
    s.kind("tab_group", 2, UID + 7)
    s.node("tab_group", 2, "C-State Residency/Wakeups", "C-State Residency/Wakeups", "tab_group_id",
           10, UID + 8)
    s.kind("timeline_group", 3, UID + 9)
    s.node("timeline_group", 3, "Core C-State Residency", "Core C-State Residency",
           "timeline_group_id", 10, UID + 10, UID + 8)
    s.kind("quantity", 4, UID + 11)
    s.node("quantity", 4, "Time|s|1", "Time", "quantity_type", 1, 202)
    s.kind("entity", 5, UID + 12)
    s.node("entity", 5, "Package_0", "Package_0", "entity_id", 300, 300)
    s.node("entity", 5, "Core_4", "Core_4", "entity_id", 301, 301, 300)
    s.kind("field", 6, UID + 13)
    s.node("field", 6, "C0", "C0", "field_id", 310, 310)
    s.kind("color", 7, UID + 14)
    s.node("color", 7, "213,255,82|213,255,82", "C0", "color_id", UID + 15, UID + 15)
    s.node("field", 6, "C6", "C6", "field_id", 311, 311)
    s.node("color", 7, "1,150,0|1,150,0", "C6", "color_id", UID + 16, UID + 16)
    # Package Temperature
    s.node("tab_group", 2, "Temperature Metrics", "Temperature Metrics", "tab_group_id", 12, UID + 17)
    s.node("timeline_group", 3, "Package Temperature", "Package Temperature", "timeline_group_id",
           12, UID + 18, UID + 17)
    s.node("quantity", 4, "Temperature Rate|C/s|1", "Temperature Rate", "quantity_type", 9, 204)
    s.node("quantity", 4, "Temperature|C|0.001", "Temperature", "quantity_type", 5, 203, 204)
    s.node("field", 6, "NA", "NA", "field_id", 312, 312)
    s.node("color", 7, "#3CAC3C|#3CAC3C", "NA", "color_id", UID + 19, UID + 19)
    # Wrong: its nodes stay, though nothing else of it does.
    s.node("tab_group", 2, "Wrong", "Wrong", "tab_group_id", 13, UID + 20)
    s.node("timeline_group", 3, "Wrong", "Wrong", "timeline_group_id", 13, UID + 21, UID + 20)
    s.magic()
    s.metric(4, 10, 202, UID + 8, UID + 10, "Core C-State Residency")
    s.sample(2000, ("METRIC", 10), ("ENTITY", 301),
             ("FIELD", 310), ("DURATION", 900), ("COLOR", UID + 15), ("UINT", 700),
             ("FIELD", 311), ("DURATION", 100), ("COLOR", UID + 16), ("UINT", 300))
    s.sample(3000, ("METRIC", 10), ("ENTITY", 301),
             ("FIELD", 311), ("DURATION", 1000), ("COLOR", UID + 16), ("UINT", 1000))
    s.metric(5, 12, 203, UID + 17, UID + 18, "Package Temperature")
    s.sample(2000, ("METRIC", 12), ("ENTITY", 300),
             ("FIELD", 312), ("DURATION", 0), ("COLOR", UID + 19), ("INT", 45))
    s.sample(3000, ("METRIC", 12), ("ENTITY", 300),
             ("FIELD", 312), ("DURATION", 5), ("COLOR", UID + 19), ("REAL", 45.5))
    return s


def traced():
    s = Stream()
    s.magic()
    s.collection(0, 0, 0)
    s.system(3, (16, 8, 0, 0), "", "", "Linux")
    s.hardware(1_000_000_000, 0x80000000, 32, 0, 0, 0, [(1, 2, 0)])
    s.marker(1000, 0)
    s.threshold(1000)
    s.header_nodes()  # uids up to 6; the quantity of time is 7
    # Memory States
    s.kind("tab_group", 2, UID + 8)
    s.node("tab_group", 2, "Memory States", "Memory States", "tab_group_id", 20, UID + 9)
    s.kind("timeline_group", 3, UID + 10)
    s.node("timeline_group", 3, "Memory States", "Memory States", "timeline_group_id", 20, UID + 11,
           UID + 9)
    s.kind("quantity", 4, UID + 12)
    s.node("quantity", 4, "Time|s|1", "Time", "quantity_type", 1, UID + 7)
    s.kind("entity", 5, UID + 13)
    s.node("entity", 5, "CPU0", "CPU0", "entity_id", 300, 300)
    s.process(77, 500, "stress")
    s.thread(0x1000, 77, 78, 600)
    s.kind("field", 6, UID + 14)
    s.node("field", 6, "Self Refresh", "Self Refresh", "field_id", 310, 310)
    s.kind("color", 7, UID + 15)
    s.node("color", 7, "153,153,153|153,153,153", "Self Refresh", "color_id", UID + 16, UID + 16)
    s.kind("nameid_attribute", 8, UID + 17)
    s.node("nameid_attribute", 8, "cause", "cause", "why it woke", 3, 402)
    s.node("nameid_attribute", 8, "Refresh", "Refresh", "", 0, UID + 18)
    s.node("quantity", 4, "Frequency|MHz|1", "Frequency", "quantity_type", 6, 200)
    s.node("field", 6, "C6", "C6", "field_id", 311, 311)
    s.node("color", 7, "1,150,0|1,150,0", "C6", "color_id", UID + 19, UID + 19)
    # Wakeups
    s.node("tab_group", 2, "C-State Residency/Wakeups", "C-State Residency/Wakeups", "tab_group_id",
           21, UID + 20)
    s.node("timeline_group", 3, "Wakeups", "Wakeups", "timeline_group_id", 21, UID + 21, UID + 20)
    # The end
    s.process(77, 8000, "stress")
    s.thread(0x2000, 77, 78, 8000)
    s.magic()
    s.metric(7, 20, UID + 7, UID + 9, UID + 11, "Memory States")
    s.sample(2000, ("METRIC", 20), ("ENTITY", 300), ("PROCESS", 77), ("THREAD", 78),
             ("FIELD", 310), ("DURATION", 400), ("COLOR", UID + 16), ("INFO", 402),
             ("INFO", UID + 18), ("QUANTITY", 200), ("UINT", 2400))
    s.sample(2500, ("METRIC", 20), ("ENTITY", 300), ("PROCESS", 77), ("THREAD", 78),
             ("FIELD", 311), ("DURATION", 0), ("COLOR", UID + 19), ("INT_LOWER_BOUND", -2),
             ("INT_UPPER_BOUND", 5))
    s.metric(9, 21, NONE, UID + 20, UID + 21, "Wakeups")
    s.sample(2600, ("METRIC", 21), ("ENTITY", 300), ("PROCESS", 77), ("THREAD", 78),
             ("FIELD", 311), ("DURATION", 0), ("COLOR", UID + 19), ("UINT", 1))
    return s


def wakelocks():
    s = Stream()
    s.magic()
    s.collection(0, 0, 0)
    s.system(6, (0, 0, 0, 0), "", "", "Linux")
    s.hardware(1_000_000_000, 2**64 - 1, 64, 0, 0, 0, [])
    s.marker(1000, 0)
    s.threshold(2000)
    s.header_nodes()
    s.process(900, 4000, "player")
    s.thread(0x1000, 900, 901, 4000)
    s.process(900, 9000, "player")
    s.thread(0x2000, 900, 901, 8500)
    s.magic()
    s.kernel(3500, 3, 0, "PowerManager")
    s.kernel(5000, 4, 0, "PowerManager")
    s.kernel(7000, 3, 0, "PowerManager")
    s.kernel(7000, 4, 0, "PowerManager")
    s.package(6000, 10042, "com.example.music")
    s.user(5000, 900, 901, 0, 2, 10042, "Audio")
    s.user(6000, 900, 901, 1, 2, 10042, "Audio")
    return s


def main():
    directory = pathlib.Path(sys.argv[1])
    for name, make in [("residency", residency), ("traced", traced), ("wakelocks", wakelocks)]:
        text = "\n".join(make().lines) + "\n"
        (directory / f"kelto_{name}.pwr.hex").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
