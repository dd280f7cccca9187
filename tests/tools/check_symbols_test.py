"""Tests of the check of symbols: it must see what it is there for."""

import pathlib
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

import check_symbols  # noqa: E402

GOOD = ["createPlugins", "destroyPlugins", "_ZN3pwr8logErrorEPKcz", "_ZTI10AutoWriter"]


class Exports(unittest.TestCase):
    def faults(self, names, required=()):
        return list(check_symbols.export_faults(names, required))

    def test_entry_points_and_our_own_names_are_right(self):
        self.assertEqual(self.faults(GOOD, ["pwr::logError", "typeinfo for AutoWriter"]), [])

    def test_a_missing_entry_point_is_found(self):
        self.assertEqual(self.faults(GOOD[1:]), ["is missing: createPlugins"])

    def test_a_decorated_entry_point_does_not_count(self):
        self.assertIn("is missing: createPlugins", self.faults(["_Z13createPluginsv", *GOOD[1:]]))

    def test_a_third_undecorated_name_is_found(self):
        self.assertEqual(self.faults([*GOOD, "helper"]),
                         ["is exported without decoration: helper"])

    def test_a_missing_name_of_ours_is_found(self):
        self.assertEqual(self.faults(GOOD, ["pwr::logNothing"]), ["is missing: pwr::logNothing"])

    def test_names_of_other_libraries_are_foreign(self):
        for name in ("_ZNSt6vectorIPN3pwr4DataESaIS2_EE17_M_realloc_insertIJS2_EEEvv",
                     "_ZNKSt6vectorIiSaIiEE4sizeEv",
                     "_ZNKRSt8optionalIiE5valueEv",
                     "_ZSt4moveIRiEONSt16remove_referenceIT_E4typeEOS2_",
                     "_ZNSaIcED1Ev",
                     "_ZTISt19_Sp_make_shared_tag",
                     "_ZTVNSt6thread11_State_implIvEE",
                     "_ZZNSt8__detail18__to_chars_10_implIjEEvPcjT_E8__digits",
                     "_ZGVZNSt8__detail1fEvE1x",
                     "_ZThn16_NSt13basic_fstreamIwED1Ev",
                     "_ZTv0_n24_NSt13basic_fstreamIwED1Ev",
                     "_ZN9__gnu_cxx14__alloc_traitsIiE1aEv",
                     "_ZN3fmt2v96detail5errorEv",
                     "_ZTVN3fmt2v912format_errorE",
                     "_ZN9rapidjson6WriterIiE6StringEPKcjb"):
            self.assertRegex(name, check_symbols.FOREIGN)

    def test_names_of_ours_that_look_like_others_are_not_foreign(self):
        for name in ("_ZN5Store4openEv",
                     "_ZN3pwr5Start3runESt6vectorIiSaIiEE",
                     "_ZN3pwr5fmt3XEv",
                     "_ZNK3pwr27QMExtensibleBackingStore4sizeEv",
                     "_ZTIN3pwr8NStarter3oneE",
                     "_Z5Stampv"):
            self.assertNotRegex(name, check_symbols.FOREIGN)


class Forbidden(unittest.TestCase):
    def test_ways_to_print_and_to_end_are_found(self):
        for name in ("abort", "exit", "_exit", "_Exit", "quick_exit", "__assert_fail", "printf",
                     "__printf_chk", "vprintf", "__vprintf_chk", "fprintf", "__fprintf_chk",
                     "dprintf", "puts", "putchar", "fputs", "perror", "stdout", "stderr",
                     "_ZSt4cout", "_ZSt4cerr", "_ZSt4clog", "_ZSt5wcerr",
                     "_ZN3fmt2v96vprintENS0_17basic_string_viewIcEE"):
            self.assertEqual(check_symbols.forbidden_uses({name}, {}), [name])

    def test_formatting_into_a_buffer_is_no_printing(self):
        for name in ("snprintf", "vsnprintf", "__vsnprintf_chk", "sprintf", "__cxa_atexit",
                     "_ZN3fmt2v96detail12is_printableEj",
                     "__cxa_guard_abort", "fwrite", "atexit"):
            self.assertEqual(check_symbols.forbidden_uses({name}, {}), [])

    def test_an_exception_holds_for_its_name_only(self):
        self.assertEqual(
            check_symbols.forbidden_uses({"abort", "exit"}, {"abort": "a reason"}), ["exit"])


if __name__ == "__main__":
    unittest.main()
