"""Starts the program where there is no screen, so that only what it answers on the command line can come of it.
command_line_test.py PROGRAM VERSION"""

import os
import subprocess
import sys
import unittest

VERSION = sys.argv.pop()
PROGRAM = sys.argv.pop()


def run(*arguments, **options):
    environment = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
    # Whatever wants a screen ends at once.
    environment["QT_QPA_PLATFORM"] = "there-is-none-of-that-name"
    options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
    return subprocess.run([PROGRAM, *arguments], env=environment, text=True, check=False, timeout=30, **options)


class CommandLine(unittest.TestCase):
    def test_tells_the_version(self):
        done = run("--version")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, f"kvOrvantaLogic_Tool {VERSION}\n", ""))

    def test_helps(self):
        done = run("--help")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertRegex(done.stdout, r"^Usage: kvOrvantaLogic_Tool ")
        for word in ("--version", "--help", "Help > User Guide", "KV_LOCAL_LIBRARY"):
            self.assertIn(word, done.stdout)
        self.assertLessEqual(max(map(len, done.stdout.splitlines())), 100)

    def test_answers_behind_other_arguments(self):
        self.assertEqual(run("-style", "fusion", "--version").stdout, f"kvOrvantaLogic_Tool {VERSION}\n")

    def test_opens_the_window_otherwise(self):
        for arguments in ([], ["--versions"], ["version"], ["-h"], ["--help=all"], ["/some/file"]):
            with self.subTest(arguments=arguments):
                done = run(*arguments)
                self.assertNotEqual(done.returncode, 0)
                self.assertEqual(done.stdout, "")
                self.assertIn("there-is-none-of-that-name", done.stderr)

    @unittest.skipUnless(os.path.exists("/dev/full"), "no such device")
    def test_says_when_nobody_gets_the_answer(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            self.assertEqual(run("--version", stdout=full).returncode, 1)


if __name__ == "__main__":
    unittest.main()
