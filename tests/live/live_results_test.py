#!/usr/bin/env python3
"""Collects on this machine and compares the results with one another and with the recording.

usage: live_results_test.py TOOL SCHEMA [SECONDS]
"""

import collections
import math
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

import pwr_file
from recording import SAMPLED_DELTA, Recording, load_json, narrow

TOOL = pathlib.Path(sys.argv[1]).resolve()
SCHEMA = pathlib.Path(sys.argv[2]).resolve()
SECONDS = float(sys.argv[3]) if len(sys.argv) > 3 else 1.0


class Case(unittest.TestCase):
    def assert_same(self, told, expected):
        """Compares long lists; their whole difference would take a minute to find."""
        for i, (one, other) in enumerate(zip(told, expected)):
            self.assertEqual(one, other, f"at {i}")
        self.assertEqual(len(told), len(expected))


class Collection:
    """A collection in a directory of its own."""

    def __init__(self, *arguments):
        self._directory = tempfile.TemporaryDirectory()
        self.directory = pathlib.Path(self._directory.name)
        self.errors = self.run("collect", "-i", "20", "-o", "r", "--record", "r.qmrec",
                               *arguments).stderr
        self.recording = Recording(self.directory / "r.qmrec")

    def close(self):
        self._directory.cleanup()

    def run(self, *arguments):
        run = subprocess.run([TOOL, *arguments], cwd=self.directory, capture_output=True,
                             text=True, env=os.environ | {"TMPDIR": str(self.directory)},
                             check=False)
        if run.returncode != 0:
            raise AssertionError(f"{arguments} ended with {run.returncode}: {run.stderr}")
        return run

    def path(self, name):
        return self.directory / name

    def files(self, suffix):
        """The numbered files with that suffix, in their order."""
        found = self.directory.glob("r_*" + suffix)
        return sorted(found, key=lambda path: int(path.stem.split("_")[1]))

    def dump(self, *files):
        return Dump(self.run("dump", *files, "--json").stdout)


class Dump:
    """What `qumetra dump --json` tells of binary results."""

    def __init__(self, text):
        self.system, self.samples, self.metrics, self.descriptors = None, [], {}, {}
        for line in text.splitlines():
            ((kind, record),) = load_json(line).items()
            if kind == "system":
                self.system = record
            elif kind == "sample":
                # They stand in the shortest form that gives the same 32-bit float.
                record["value"] = narrow(record["value"])
                self.samples.append(record)
            elif kind == "metric":
                self.metrics[record["id"]] = record
            elif kind == "descriptor":
                self.descriptors[record["index"]] = record["name"]

    def ticks_per_microsecond(self):
        ticks = self.system["lastTimestamp"] - self.system["firstTimestamp"]
        return round(ticks / (self.system["durationSeconds"] * 1e6))

    def end_microseconds(self, timestamp):
        """The end of a point in .qmjson: single precision throughout, then cut."""
        scale = narrow(1.0 / narrow(self.ticks_per_microsecond()))
        return math.trunc(narrow(narrow(timestamp - self.system["firstTimestamp"]) * scale))


class Series:
    """A series of a .qmjson document with what its metric says of it."""

    def __init__(self, metric, meta, series):
        self.metric, self.states = metric, meta.get("states", [])
        self.name, self.friendly_name = series["name"], series["friendlyName"]
        rates = [unit["conversion"] for unit in meta["altUnits"] if unit["isCalculatedRate"]]
        self.rate = rates[-1] if rates and not self.states else None
        self.points = series["points"]

    def values(self):
        """(end, state or None, value, length of the point) of every value."""
        for point in self.points:
            length = (point["x1"] - point["x"]) % 2 ** 64
            if isinstance(point["y"], dict):
                for state, value in point["y"]["pairs"]:
                    yield point["x1"], self.states[int(state)], value, length
            else:
                yield point["x1"], None, point["y"], length

    def shown(self, value, length):
        """What a value that was measured is in the document."""
        if self.rate is None:
            return value
        return value * self.rate * 1e6 / length if length else 0.0


def keep_states(pairs):
    """Keeps all members of a point's "y", whose names are numbers of states and may repeat."""
    if pairs and all(name.isdigit() for name, _ in pairs):
        return {"pairs": pairs}
    return dict(pairs)


def series_of(path):
    document = load_json(path.read_text(encoding="utf-8"), object_pairs_hook=keep_states)
    return [Series(metric, content["metaData"], series)
            for metric, content in document["data"].items()
            for series in content["data"].values()]


class OrdinaryRun(Case):

    @classmethod
    def setUpClass(cls):
        cls.run_ = Collection("-r", "qmjson,json,bin", "-t", str(SECONDS))
        cls.addClassCleanup(cls.run_.close)
        cls.recording = cls.run_.recording
        cls.dump = cls.run_.dump("r.qmbin")
        cls.series = series_of(cls.run_.path("r.qmjson"))

    def test_collection_has_samples_of_every_metric(self):
        self.assertGreater(len(self.recording.elements), 100)
        self.assertEqual({metric["name"] for metric in self.dump.metrics.values()},
                         {element.metric.name for element in self.recording.elements})

    def test_dump_is_what_was_recorded(self):
        told = [(s["timestamp"], s["metricId"], s["name"], self.dump.descriptors[s["descriptor"]],
                 s["value"], s["durationMicroseconds"]) for s in self.dump.samples]
        self.assert_same(told, binary_form(self.recording))

    def test_dump_and_qmjson_agree_sample_by_sample(self):
        binary = collections.defaultdict(list)
        for sample in self.dump.samples:
            metric = self.dump.metrics[sample["metricId"]]
            key = (metric["name"], sample["name"], self.dump.descriptors[sample["descriptor"]],
                   self.dump.end_microseconds(sample["timestamp"]))
            binary[key].append(sample["value"])
        documents = collections.defaultdict(list)
        shown = collections.defaultdict(list)
        for series in self.series:
            for end, state, value, length in series.values():
                # The series of a delta are named after their states, as its samples are.
                key = (series.metric, series.friendly_name, state or series.friendly_name, end)
                documents[key].append(narrow(value))
                shown[key].append((series, length))
        self.assertEqual(set(documents), set(binary))
        for key, values in documents.items():
            if all(series.rate is None for series, _ in shown[key]):
                self.assertEqual(sorted(values), sorted(binary[key]), key)
            else:
                self.compare_rates(key, values, shown[key], binary[key])

    def compare_rates(self, key, values, shown, measured):
        """Of several CPUs that have a state, all were measured for the same time."""
        self.assertEqual(len({length for _, length in shown}), 1, key)
        series, length = shown[0]
        self.assertEqual(sorted(values),
                         sorted(narrow(series.shown(value, length)) for value in measured), key)

    def test_points_are_where_the_recording_has_them(self):
        expected, scale = collections.Counter(), self.recording.scale
        for e in self.recording.elements:
            end = math.trunc(narrow(narrow(e.timestamp - self.recording.first) * scale))
            length = math.trunc(narrow(narrow(e.duration) * scale))
            name = e.entity + (" " + e.state if e.metric.type == SAMPLED_DELTA else "")
            expected[(e.metric.name, name, (end - length) % 2 ** 64, end)] += 1
        told = collections.Counter()
        for series in self.series:
            for point in series.points:
                values = len(point["y"]["pairs"]) if isinstance(point["y"], dict) else 1
                told[(series.metric, series.name, point["x"], point["x1"])] += values
        self.assertEqual(told - expected, {})
        self.assertEqual(expected - told, {})

    def test_trace_has_the_values_of_the_dump(self):
        events = load_json(self.run_.path("r.json").read_text(encoding="utf-8"),
                           object_pairs_hook=list)
        ((_, events),) = events
        told = collections.Counter()
        for event in map(dict, events):
            for state, value in event["args"]:
                told[(event["cat"], state, narrow(value))] += 1
        expected = collections.Counter(
            (self.dump.metrics[s["metricId"]]["name"], self.dump.descriptors[s["descriptor"]],
             s["value"]) for s in self.dump.samples)
        self.assertEqual(told - expected, {})
        self.assertEqual(expected - told, {})

    def test_qmjson_is_as_its_schema_tells(self):
        try:
            import jsonschema
        except ImportError:
            self.skipTest("python3-jsonschema is missing")
        schema = load_json(SCHEMA.read_text(encoding="utf-8"))
        document = load_json(self.run_.path("r.qmjson").read_text(encoding="utf-8"))
        jsonschema.Draft7Validator(schema).validate(document)


def binary_form(recording):
    """The samples as a dump tells them. A delta is named after its state."""
    return [(e.timestamp, e.metric.id, e.state if e.metric.type == SAMPLED_DELTA else e.entity,
             e.state, narrow(recording.value(e)), narrow(recording.microseconds(e)))
            for e in recording.elements]


class ContinuousRun(Case):
    FILES = 5

    @classmethod
    def setUpClass(cls):
        cls.run_ = Collection("-r", "bin,json,qmjson", "-t", str(SECONDS), "--continuous",
                              str(SECONDS / cls.FILES))
        cls.addClassCleanup(cls.run_.close)
        cls.recording = cls.run_.recording

    def documents(self, suffix):
        return [load_json(path.read_text(encoding="utf-8")) for path in self.run_.files(suffix)]

    def test_each_writer_makes_a_file_per_flush(self):
        self.assertEqual(self.recording.flushes, self.FILES)
        for suffix in (".qmbin", ".json", ".qmjson"):
            self.assertEqual([path.name for path in self.run_.files(suffix)],
                             [f"r_{i}{suffix}" for i in range(self.FILES)])

    def test_binary_files_together_hold_the_recording(self):
        dump = self.run_.dump(*self.run_.files(".qmbin"))
        told = [(s["timestamp"], s["metricId"], s["name"], dump.descriptors[s["descriptor"]],
                 s["value"], s["durationMicroseconds"]) for s in dump.samples]
        self.assert_same(told, binary_form(self.recording))

    def test_traces_together_hold_the_recording(self):
        told = [(e["ph"], e["name"], e["ts"], e["dur"], e["pid"], e["args"]["power"],
                 e["args"]["state"])
                for document in self.documents(".json") for e in document["traceEvents"]]
        self.assert_same(told, [
            ("X", e.path, e.timestamp, self.recording.microseconds(e), e.metric.id,
             self.recording.value(e), e.state) for e in self.recording.elements])

    def test_qmjson_files_together_hold_the_recording(self):
        told = [(d["ID"], d["Entity"], d["Descriptor"], d["State"], d["Timestamp"], d["Duration"],
                 d["Value"]) for document in self.documents(".qmjson") for d in document["Data"]]
        self.assert_same(told, [
            (e.metric.id, e.path, e.state, e.state, e.timestamp, self.recording.microseconds(e),
             self.recording.value(e)) for e in self.recording.elements])

    def test_each_file_ends_where_the_next_begins(self):
        ends = []
        for document in self.documents(".qmjson"):
            (system,) = [m for m in document["Metadata"] if m["Name"] == "SystemMetadata"]
            stop = int(system["Qumetra"]["Collection Stop Timestamp"])
            stamps = [point["Timestamp"] for point in document["Data"]]
            self.assertLessEqual(max(stamps, default=0), stop)
            self.assertGreater(min(stamps, default=stop), ends[-1] if ends else 0)
            ends.append(stop)
        self.assertEqual(ends, sorted(ends))


class ImportStream(unittest.TestCase):
    """What the viewer is told of a live collection with a command."""

    @classmethod
    def setUpClass(cls):
        cls.run_ = Collection("-r", "kelto", "--", "sleep", "0.3")
        cls.addClassCleanup(cls.run_.close)
        cls.recording = cls.run_.recording
        cls.file = pwr_file.PwrFile(cls.run_.path("r.pwr"))

    def test_nothing_is_complained_of(self):
        self.assertNotIn("not among the processes", self.run_.errors)

    def test_entities_are_packages_with_their_cores_and_cpus(self):
        by_uid = {node.uid: node for node in self.file.nodes if node.kind == "entity"}
        cpus = [node for node in by_uid.values() if node.short.startswith("CPU ")]
        self.assertTrue(cpus)
        for cpu in cpus:
            core = by_uid[cpu.parent]
            self.assertTrue(core.short.startswith("Core "), core)
            self.assertTrue(by_uid[core.parent].short.startswith("Package "), core)

    def test_every_state_has_a_colour(self):
        states = set(self.file.named("field"))
        self.assertLessEqual({element.state for element in self.recording.elements}, states)
        self.assertEqual(set(self.file.named("color")), states)

    def test_states_that_the_viewer_knows_have_its_colours(self):
        colours = {name: node.long for name, node in self.file.named("color").items()}
        self.assertEqual(colours["Active"], "#3CAC3C|#3CAC3C")
        self.assertEqual(colours["idle"], "153,153,153|153,153,153")

    def test_command_and_tool_are_processes_with_start_and_end(self):
        expected = []
        for process in self.recording.processes.values():
            self.assertEqual(process["path"], process["name"])
            self.assertLessEqual(len(process["path"]), 15)
            end = process.get("endTime", self.recording.last)
            expected += [(process["pid"], process["startTime"], process["path"]),
                         (process["pid"], end, process["path"])]
        self.assertCountEqual(self.file.processes, expected)
        self.assertEqual({process.name for process in self.file.processes}, {"qumetra", "sleep"})

    def test_live_run_tells_of_the_same_ends(self):
        run = Collection("-r", "kelto", "--continuous", "1", "--", "sleep", "0.1")
        self.addCleanup(run.close)
        told = collections.defaultdict(list)
        for process in pwr_file.PwrFile(run.path("r.pwr")).processes:
            told[process.pid].append(process.time)
        self.assertEqual(told, {
            process["pid"]: [process["startTime"], process.get("endTime", run.recording.last)]
            for process in run.recording.processes.values()})

    def test_command_starts_and_ends_within_the_collection(self):
        (tool,) = [p for p in self.recording.processes.values() if p["path"] == "qumetra"]
        (command,) = [p for p in self.recording.processes.values() if p["path"] == "sleep"]
        self.assertEqual(command["parentPid"], tool["pid"])
        self.assertLess(tool["startTime"], self.recording.first)
        self.assertNotIn("endTime", tool)
        self.assertGreaterEqual(command["startTime"], self.recording.first)
        self.assertLessEqual(command["endTime"], self.recording.last)
        self.assertGreater((command["endTime"] - command["startTime"]) / 1e9, 0.299)

    def test_samples_of_a_process_name_its_pid(self):
        entities = self.file.named("entity")
        pids = {process.name: process.pid for process in self.file.processes}
        told = collections.defaultdict(set)
        for sample in self.file.samples:
            for (first, entity), (second, pid) in zip(sample.attributes, sample.attributes[1:]):
                if (first, second) == (pwr_file.ENTITY, pwr_file.PROCESS_ID):
                    told[entity].add(pid)
        self.assertEqual(told, {entities[name].uid: {pid} for name, pid in pids.items()})


class IdleStates(unittest.TestCase):
    """A machine whose kernel names its idle states as the viewer does."""

    def test_idle_states_have_the_colours_of_their_names(self):
        with tempfile.TemporaryDirectory() as directory:
            sysfs = pathlib.Path(directory)
            for i, name in enumerate(["POLL", "C1", "C1E", "C6"]):
                state = sysfs / f"devices/system/cpu/cpu0/cpuidle/state{i}"
                state.mkdir(parents=True)
                for file, text in {"name": name, "time": "5", "usage": "1"}.items():
                    (state / file).write_text(text + "\n")
            run = Collection("-r", "kelto", "-t", "0.1", "--sysfs", directory)
        self.addCleanup(run.close)
        colours = pwr_file.PwrFile(run.path("r.pwr")).named("color")
        self.assertEqual(colours["C1"].long, "152,238,53|152,238,53")
        self.assertEqual(colours["C6"].long, "1,150,0|1,150,0")
        # The viewer's table knows neither; they get some colour.
        self.assertIn("POLL", colours)
        self.assertIn("C1E", colours)


class OneRecording(unittest.TestCase):
    def test_second_collection_into_one_file_is_refused_before_its_command_starts(self):
        with tempfile.TemporaryDirectory() as directory:
            record = [TOOL, "collect", "-r", "auto", "-q", "--record", "one.qmrec"]
            with subprocess.Popen([*record, "--", "sleep", "1"], cwd=directory) as first:
                while not pathlib.Path(directory, "one.qmrec").exists():
                    time.sleep(0.01)
                second = subprocess.run([*record, "--", "touch", "started"], cwd=directory,
                                        capture_output=True, text=True, check=False)
            self.assertEqual(first.returncode, 0)
            self.assertEqual(second.returncode, 2)
            self.assertEqual(second.stderr, "qumetra: cannot write results: one.qmrec: is being "
                                            "written by another process\n")
            self.assertFalse(pathlib.Path(directory, "started").exists())
            self.assertTrue(Recording(pathlib.Path(directory, "one.qmrec")).elements)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
