#!/usr/bin/env python3
"""Reads the expected binary results and import streams by their descriptions, and checks what comes out.

usage: ksy_test.py DIRECTORY_OF_DESCRIPTIONS
"""

import pathlib
import sys
import unittest

import hex_text
from ksy_reader import Format

FORMATS = pathlib.Path(sys.argv[1])
RECORDINGS = pathlib.Path(__file__).resolve().parent
QMBIN = Format(FORMATS / "qmbin.ksy")
PWR = Format(FORMATS / "pwr.ksy")
NO_UID = 0xffffffff
FIRST_DRAWN_UID = 0x60000000


def payloads(name, kind):
    records = QMBIN.read(hex_text.pack(RECORDINGS / f"{name}.hex"))["records"]
    return [record["payload"] for record in records if record["type"] == kind]


class BinaryResult(unittest.TestCase):
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


def flat(record):
    """A record of an import stream with its kind, and the fields of frame, payload and content."""
    kind, fields = record["first_word"], dict(record["body"])
    if "payload" in fields:
        kind = fields["type"]
        fields |= fields.pop("payload")
    if "content" in fields:
        kind = fields["sub_type"]
        fields |= fields.pop("content")
    return {"kind": kind} | fields


class ImportStream(unittest.TestCase):
    maxDiff = None

    def records(self, name, *kinds):
        """Of the expected stream of NAME.qmrec, all records of these kinds, or all."""
        data = hex_text.pack(RECORDINGS / f"{name}.pwr.hex")
        records = map(flat, PWR.read(data)["records"])
        return [record for record in records if not kinds or record["kind"] in kinds]

    def check(self, record, **fields):
        self.assertEqual({name: record[name] for name in fields}, fields)

    def test_records_stand_in_their_order(self):
        kinds = [record["kind"] for record in self.records("kelto_wakelocks")]
        self.assertEqual(kinds, ["magic", "collection", "system", "hardware", "head_marker",
                                 "power_threshold", *["info"] * 7, "process", "thread", "process",
                                 "thread", "magic", *["kernel_wakelock"] * 4, "package",
                                 "user_wakelock", "user_wakelock"])

    def test_head_describes_the_machine(self):
        head = self.records("kelto_residency")[:6]
        self.check(head[0], constant_4=0xaddedefa)
        self.check(head[1], constant_8=1, version_major=2025, version_minor=6, version_patch=21,
                   constant_20=0x80000000000, name=b"power")
        self.check(head[2], constant_8=1, constant_10=0, os_kind="x86_64", os_version=[6, 1, 0, 0],
                   host_name=b"host", platform_name=b"Plat", os_name=b"Linux", last_text=b"")
        self.check(head[3], tsc_frequency_hz=2_500_000_000, tsc_frequency_hz_again=2_500_000_000,
                   highest_address=2**64 - 1, address_width=64, family=6, model=151, stepping=2,
                   threads=[{"constant_0": 0, "package": 0, "core": core, "thread": thread}
                            for core, thread in [(4, 0), (4, 1), (8, 0)]])
        self.check(head[4], constant_4=0x2000020, constant_8=2, first_tsc=1000,
                   timer_resolution_div_100=10_000)
        self.check(head[5], constant_8=1, constant_12=12, constant_14=bytes(48),
                   cpu_frequency_mhz=3600)

    def test_kinds_of_names_are_declared_before_their_names(self):
        declared = {}
        for node in self.records("kelto_traced", "info"):
            if node["info_type"] == 0:
                declared[node["value"]] = node["long_name"]
            else:
                self.assertEqual(declared[node["info_type"]], node["kind_name"])
        self.assertEqual(list(declared.values()), [
            b"metric_type", b"tab_group", b"timeline_group", b"quantity", b"entity", b"field",
            b"color", b"nameid_attribute"])

    def test_names_form_a_tree(self):
        nodes = {node["long_name"]: node for node in self.records("kelto_residency", "info")}
        self.check(nodes[b"Core_4"], uid=301, value=301, parent_uid=300, short_name=b"Core_4",
                   kind_name=b"entity", description=b"entity_id", version=2, tsc=0)
        self.check(nodes[b"Package_0"], uid=300, parent_uid=NO_UID)
        self.check(nodes[b"Temperature|C|0.001"], uid=203, value=5, parent_uid=204,
                   short_name=b"Temperature")
        self.check(nodes[b"1,150,0|1,150,0"], kind_name=b"color", short_name=b"C6",
                   uid=FIRST_DRAWN_UID + 16)

    def test_metrics_point_at_their_names(self):
        cores, degrees = self.records("kelto_residency", "metric")
        self.check(cores, metric_type="sampled_finite_set_counter", metric_id=10, quantity_uid=202,
                   tab_group_uid=FIRST_DRAWN_UID + 8, timeline_group_uid=FIRST_DRAWN_UID + 10,
                   name=b"Core C-State Residency", second_name=b"Core C-State Residency")
        self.check(degrees, metric_type="sampled_value", metric_id=12)
        events = self.records("kelto_traced", "metric")[1]
        self.check(events, metric_type="traced_event", quantity_uid=NO_UID)

    def test_samples_are_lists_of_attributes(self):
        samples = self.records("kelto_residency", "sample")
        self.assertEqual([sample["tsc"] for sample in samples], [2000, 3000, 2000, 3000])
        self.assertEqual([(a["id"], a["value"]) for a in samples[0]["attributes"]], [
            ("metric", 10), ("entity", 301),
            ("field", 310), ("duration", 900), ("color", FIRST_DRAWN_UID + 15), ("uint", 700),
            ("field", 311), ("duration", 100), ("color", FIRST_DRAWN_UID + 16), ("uint", 300)])
        self.assertEqual(samples[3]["attributes"][-1], {"id": "real", "value": 45.5})

    def test_bounds_have_their_signs(self):
        ranged = self.records("kelto_traced", "sample")[1]["attributes"]
        self.assertEqual([(a["id"], a["value"]) for a in ranged[-2:]],
                         [("int_lower_bound", -2), ("int_upper_bound", 5)])

    def test_legacy_samples_have_unsigned_integers_for_reals(self):
        data = bytearray(hex_text.pack(RECORDINGS / "kelto_residency.pwr.hex"))
        # The last sample: 22 bytes and 6 attributes; its version is at 18, its real value is the end.
        data[-94 + 18] = 1
        data[-8:] = (45).to_bytes(8, "little")
        last = flat(PWR.read(bytes(data))["records"][-1])
        self.assertEqual(last["attributes"][-1], {"id": "real", "value": 45})

    def test_processes_and_threads_start_and_end(self):
        records = self.records("kelto_traced", "process", "thread")
        self.assertEqual([(r["kind"], r["event"], r["pid"], r["tsc"]) for r in records], [
            ("process", 0x1000, 77, 500), ("thread", "start", 77, 600),
            ("process", 0x1000, 77, 8000), ("thread", "end", 77, 8000)])
        self.assertEqual((records[0]["path"], records[1]["tid"]), (b"stress", 78))

    def test_wakelocks_have_their_actions(self):
        kernel = self.records("kelto_wakelocks", "kernel_wakelock")
        self.assertEqual([(r["tsc"], r["action"], r["timeout"], r["name"]) for r in kernel[:2]], [
            (3500, "initial_lock", 0, b"PowerManager"), (5000, "unlock_all", 0, b"PowerManager")])
        user = self.records("kelto_wakelocks", "user_wakelock")
        self.assertEqual([(r["tsc"], r["action"], r["flag"]) for r in user],
                         [(5000, "lock", "screen_dim"), (6000, "unlock", "screen_dim")])
        self.check(user[0], tid=901, pid=900, uid=10042, constant_30=0, name=b"Audio")
        package, = self.records("kelto_wakelocks", "package")
        self.check(package, tsc=6000, uid=10042, name=b"com.example.music")

    def test_unknown_first_word_is_refused(self):
        with self.assertRaisesRegex(ValueError, "first_word is 0x4030201"):
            PWR.read(bytes([1, 2, 3, 4]))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
