"""The server and community_admin as a host uses them."""

import os
import re
import shutil
import sqlite3
import subprocess
import tempfile
import threading
import unittest
from pathlib import Path

from serving import Serving, mapping

ADMIN = os.environ["KV_ADMIN"]


def administer(data, *arguments):
    """How it ended, and what it said on standard output."""
    done = subprocess.run([ADMIN, "--data", data, *arguments], stdout=subprocess.PIPE, text=True, check=False, timeout=60)
    return done.returncode, done.stdout


def start_badly(*options, **environment):
    """How a server ended that was not to start, and what it complained of."""
    done = subprocess.run([os.environ["KV_SERVER"], *options], env=environment, capture_output=True, text=True,
                          check=False, timeout=60)
    return done.returncode, done.stdout, done.stderr.split("\n", maxsplit=1)[0]


class WhileItRuns(Serving):
    options = ("--path-prefix=/library", "--uploads-of-address", "1000")

    @classmethod
    def setUpClass(cls):
        os.environ["KV_COMMUNITY_UPLOADS_OF_USER"] = "1000"
        try:
            super().setUpClass()
        finally:
            del os.environ["KV_COMMUNITY_UPLOADS_OF_USER"]
        cls().log_in("Ada", "/library")

    def admin(self, *arguments, status=0):
        ended, said = administer(self.data, *arguments)
        self.assertEqual(ended, status, said)
        return said

    def upload(self, plugin, *names, user="Ada"):
        return self.post(f"/library/kv_upload.php?user={user}&plugin={plugin}&comments=", **self.form(mapping(*names)))

    def listing(self, plugin):
        return self.post(f"/library/kv_listplists.php?plugin={plugin}")

    def test_its_address_has_the_prefix_and_nothing_is_beside_it(self):
        self.assertTrue(self.address.endswith("/library/"), self.address)
        self.assertEqual(self.ask("GET", "/library/healthz")[::2], (200, "ok"))
        for path in ("/", "/healthz", "/libraryhealthz", "/library/library/healthz", "/Library/healthz", "/library//healthz"):
            with self.subTest(path=path):
                self.assertEqual(self.ask("GET", path)[0], 404)
        status, headers, _ = self.ask("GET", "/library")
        self.assertEqual((status, headers["Location"]), (308, "/library/"))

    def test_what_is_deleted_is_gone_at_once_and_comes_back(self):
        self.assertIn("is now shared", self.upload("Gone", "Cutoff"))
        number = re.search(r'"patchID":(\d+)', self.listing("Gone"))[1]
        file = re.search(r'"fileLocation":"([^"]+)"', self.listing("Gone"))[1]
        self.admin("delete", number)
        self.assertEqual(self.listing("Gone"), "[]")
        self.assertEqual(self.ask("GET", f"/library/{file}")[0], 404)
        self.assertEqual(self.ask("GET", f"/library/mapping?id={number}")[0], 404)
        self.assertIn("has removed this mapping", self.upload("Gone", "Cutoff"))
        self.admin("restore", number)
        self.assertIn(file, self.listing("Gone"))
        self.assertEqual(self.ask("GET", f"/library/{file}")[::2], (200, mapping("Cutoff").decode()))

    def test_who_is_banned_shares_nothing_more(self):
        self.log_in("Eve", "/library")
        self.admin("ban", "Eve")
        self.assertIn("may not share", self.upload("Echo", "Cutoff", user="Eve"))
        self.admin("unban", "Eve")
        self.admin("quota", "Eve", "1")
        self.assertIn("is now shared", self.upload("Echo", "Cutoff", user="Eve"))
        self.assertIn("as many mappings today", self.upload("Echo", "Resonance", user="Eve"))

    def test_another_pin_takes_the_place_of_the_old_one(self):
        old = self.log_in("Bob", "/library")
        new = re.search(r"is (\d{6})\.", self.admin("reset-pin", "Bob"))[1]
        check = "/library/checkuser.php?userName=Bob&pinCode="
        if new != old:
            self.assertEqual(self.post(check + old), "\nNO\n")
        self.assertIn("Please log in", self.upload("Echo", "Cutoff", user="Bob"))
        self.assertEqual(self.post(check + new), "\nOK\n")
        self.assertIn("is now shared", self.upload("Echo", "Cutoff", user="Bob"))

    def test_a_backup_made_meanwhile_serves_what_was_shared_before(self):
        for number in range(5):
            self.assertIn("is now shared", self.upload("Kept", f"Before {number}"))
        before = self.listing("Kept")
        stop = threading.Event()
        replies = []

        def go_on():
            while not stop.is_set():
                replies.append(self.upload("Later", f"Later {len(replies)}"))

        uploading = threading.Thread(target=go_on)
        uploading.start()
        with tempfile.TemporaryDirectory() as folder:
            copy = Path(folder) / "copy.sqlite"
            self.admin("backup", copy)
            stop.set()
            uploading.join()
            self.assertGreater(len(replies), 0)
            self.assertEqual({reply for reply in replies if "is now shared" not in reply}, set())
            # As the README says.
            data = Path(folder) / "data"
            data.mkdir()
            shutil.copy(copy, data / "library.sqlite")
            self.assertEqual(administer(data, "check")[0], 0)
            other = subprocess.Popen([os.environ["KV_SERVER"], "--port", "0", "--data", data], stdout=subprocess.PIPE,
                                     text=True)
            try:
                port = int(re.search(r":(\d+)/", other.stdout.readline())[1])
                there = type(self)("run")
                there.port = port
                self.assertEqual(there.ask("POST", "/kv_listplists.php?plugin=Kept")[2], before)
            finally:
                other.terminate()
                other.communicate(timeout=20)
        self.admin("check")


class Health(Serving):
    def test_is_told_in_words_when_the_library_cannot_be_read(self):
        self.assertEqual(self.ask("GET", "/healthz")[::2], (200, "ok"))
        with sqlite3.connect(self.data / "library.sqlite") as database:
            database.execute("ALTER TABLE mapping RENAME TO lost")
        database.close()
        status, _, said = self.ask("GET", "/healthz")
        self.assertEqual(status, 503)
        self.assertRegex(said, r"^The library could not .*\.$")


class AccessLogFile(Serving):
    @classmethod
    def setUpClass(cls):
        logs = tempfile.TemporaryDirectory()
        cls.addClassCleanup(logs.cleanup)
        cls.log = Path(logs.name) / "access.log"
        cls.options = ("--access-log", str(cls.log))
        super().setUpClass()

    def test_tells_every_request_and_no_secret_and_can_be_rotated(self):
        pin = self.log_in("Ada")
        self.assertEqual(self.ask("POST", "/kv_upload.php?comments=" + "x" * 9000)[0], 414)
        old = self.log.with_suffix(".1")
        self.log.rename(old)
        self.ask("GET", "/?search=secret")
        text = old.read_text(encoding="utf-8")
        self.assertEqual(re.findall(r'"(.*) HTTP/1\.1" (\d+)', text), [
            ("POST /checkuserexists.php", "200"), ("POST /checkuser.php", "200"), ("POST /kv_upload.php", "414")])
        self.assertRegex(self.log.read_text(encoding="utf-8"), r'\A127\.0\.0\.1 - - \[.*\] "GET / HTTP/1\.1" 200 \d+\n\Z')
        for secret in (pin, "Ada", "example.org", "secret"):
            self.assertNotIn(secret, text + self.log.read_text(encoding="utf-8"))


class Start(unittest.TestCase):
    def test_is_refused_in_words(self):
        with tempfile.TemporaryDirectory() as folder:
            data = f"{folder}/data"
            for options, environment, complaint in (
                (("--port", "http"), {}, '--port has to be a number from 0 to 65535, not "http".'),
                (("--prot", "80"), {}, 'there is no option "--prot".'),
                ((), {"KV_COMMUNITY_PATH_PREFIX": "x"},
                 'KV_COMMUNITY_PATH_PREFIX has to be a path that begins with a slash, not "x".'),
            ):
                ended = start_badly("--data", data, *options, **environment)
                self.assertEqual(ended, (2, "", f"community_server: {complaint}"))
            self.assertFalse(Path(data).exists())
            ended = start_badly("--data", data, "--port", "0", "--access-log", f"{folder}/none/log")
            self.assertEqual(ended, (1, "", f"community_server: cannot write the access log {folder}/none/log"))

    def test_says_what_there_is_to_say(self):
        status, said, _ = start_badly("--help")
        self.assertEqual(status, 0)
        self.assertIn("--path-prefix", said)
        self.assertRegex(start_badly("--version")[1], r"\Acommunity_server \d+\.\d+\.\d+\n\Z")


if __name__ == "__main__":
    unittest.main()
