"""Reads in the program's ELF headers and symbols whether it is hardened: hardening_test.py PROGRAM."""

import platform
import re
import subprocess
import sys
import unittest

PROGRAM = sys.argv.pop(1)


def readelf(*options):
    return subprocess.run(["readelf", "--wide", *options, PROGRAM], capture_output=True, text=True, check=True).stdout


class Hardening(unittest.TestCase):
    def test_code_lies_at_another_address_at_every_start(self):
        self.assertRegex(readelf("--file-header"), r"Type:\s+DYN")

    def test_stack_holds_no_code(self):
        self.assertRegex(readelf("--program-headers"), r"GNU_STACK .* RW +0x")

    def test_tables_of_addresses_are_filled_at_the_start_and_then_read_only(self):
        self.assertIn("GNU_RELRO", readelf("--program-headers"))
        self.assertRegex(readelf("--dynamic"), r"\(FLAGS_1\).*\bNOW\b")

    def test_stacks_are_guarded(self):
        self.assertTrue(re.search(r" __stack_chk_fail\b", readelf("--dyn-syms")))

    def test_copies_are_checked(self):
        self.assertTrue(re.search(r" __\w+_chk@GLIBC", readelf("--dyn-syms")))

    @unittest.skipUnless(platform.machine() == "x86_64", "other processors do it in other ways")
    def test_jumps_lead_where_functions_begin(self):
        # Debian's own start-up code has no such marks, so the program's header cannot say that all of it has.
        main = subprocess.run(["objdump", "--disassemble=main", PROGRAM], capture_output=True, text=True, check=True).stdout
        self.assertRegex(main, r"<main>:\n.*\bendbr64\b")


if __name__ == "__main__":
    unittest.main()
