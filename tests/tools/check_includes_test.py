"""Tests of the check of includes: it must see what it is there for."""

import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

import check_includes  # noqa: E402


class CheckIncludes(unittest.TestCase):
    def test_the_host_contract_includes_nothing_of_ours(self):
        self.assertTrue(check_includes.may_include("host/data.h", "host/unique_id.h"))
        self.assertFalse(check_includes.may_include("host/data.h", "client/src/common/pw_log.h"))

    def test_common_code_knows_no_writer_and_no_model(self):
        self.assertFalse(check_includes.may_include("client/src/common/a.cpp", "writers/b.h"))
        self.assertFalse(
            check_includes.may_include("client/src/common/a.cpp", "qumetra/model/model.h"))

    def test_a_writer_includes_the_frame_but_no_other_writer(self):
        writer = "writers/autowriter_plugin.cpp"
        self.assertTrue(check_includes.may_include(writer, "writers/writer_plugins.h"))
        self.assertTrue(check_includes.may_include(writer, "writers/autowriter_plugin.h"))
        self.assertFalse(check_includes.may_include(writer, "writers/json_plugin.h"))

    def test_a_writer_in_a_folder_is_one_unit(self):
        self.assertTrue(check_includes.may_include(
            "writers/keltowriter_plugin/samples.cpp", "writers/keltowriter_plugin/stream.h"))
        self.assertFalse(check_includes.may_include(
            "writers/keltowriter_plugin/samples.cpp", "writers/json_plugin.h"))

    def test_writers_of_samples_share_what_a_sample_means(self):
        for writer in ("continuous_writer/a.cpp", "json_plugin_helper/a.cpp",
                       "binarywriter_plugin/a.cpp"):
            self.assertTrue(
                check_includes.may_include("writers/" + writer, "writers/sample_reading.h"))
        self.assertTrue(
            check_includes.may_include("writers/sample_reading.cpp", "writers/data_text.h"))
        self.assertFalse(check_includes.may_include(
            "writers/textwriter_plugin/a.cpp", "writers/sample_reading.h"))
        self.assertFalse(check_includes.may_include(
            "writers/binarywriter_plugin/a.cpp", "writers/continuous_writer/cont_writer.h"))

    def test_only_the_registry_knows_every_writer(self):
        self.assertTrue(check_includes.may_include(
            "writers/writer_plugins.cpp", "writers/json_plugin.h"))
        self.assertFalse(check_includes.may_include(
            "writers/writer_plugins.h", "writers/json_plugin.h"))

    def test_the_run_reaches_writers_through_the_frame_only(self):
        self.assertTrue(
            check_includes.may_include("qumetra/run/run.cpp", "writers/writer_plugins.h"))
        self.assertFalse(
            check_includes.may_include("qumetra/run/run.cpp", "writers/autowriter_plugin.h"))
        self.assertFalse(
            check_includes.may_include("qumetra/cli/main.cpp", "writers/writer_plugins.h"))

    def test_accesses_know_the_model_and_are_known_to_collectors_only(self):
        access = "qumetra/access/pci_config_backend.cpp"
        self.assertTrue(check_includes.may_include(access, "qumetra/model/access_backend.h"))
        self.assertFalse(check_includes.may_include(access, "qumetra/collect/clock.h"))
        header = "qumetra/access/pci_devices.h"
        self.assertTrue(check_includes.may_include("qumetra/collect/a.cpp", header))
        for room in ("client/src/common", "qumetra/model", "qumetra/run", "qumetra/cli", "writers"):
            self.assertFalse(check_includes.may_include(f"{room}/a.cpp", header))

    def test_nobody_includes_the_command_line(self):
        for room in ("host", "client/src/common", "qumetra/model", "qumetra/run", "writers"):
            self.assertFalse(check_includes.may_include(f"{room}/a.cpp", "qumetra/cli/options.h"))

    def test_a_forbidden_include_is_found_with_its_line(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "host").mkdir()
            (root / "host" / "a.h").write_text('#pragma once\n#include "writers/b.h"\n')
            self.assertEqual(
                list(check_includes.violations(root)), [("host/a.h", 2, "writers/b.h")])


if __name__ == "__main__":
    unittest.main()
