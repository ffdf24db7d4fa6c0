"""Makes the Debian package of the community library's server, looks at what is in it, and serves from there.

Run by CTest, which says in the environment where the build is.
"""

import configparser
import os
import re
import shutil
import stat
import subprocess
import tempfile
import unittest
import urllib.error
import urllib.request
from pathlib import Path

from commands import MadePackage, run

BUILD = Path(os.environ["KV_BUILD"])
VERSION = os.environ["KV_VERSION"]
PACKAGE = "kvorvantalogic-tool-community-server"
SERVICE = "kvorvantalogic-community"

SERVER = "usr/bin/community_server"
ADMIN = "usr/bin/community_admin"
UNIT = f"usr/lib/systemd/system/{SERVICE}.service"
DEFAULTS = f"etc/default/{SERVICE}"
DOCUMENTS = f"usr/share/doc/{PACKAGE}"
MANUALS = "usr/share/man/man8"

EXPECTED = sorted(
    [SERVER, ADMIN, UNIT, DEFAULTS, f"{DOCUMENTS}/examples/nginx.conf"]
    + [f"{MANUALS}/{name}.8.gz" for name in ("community_admin", "community_server")]
    + [f"{DOCUMENTS}/{name}" for name in ("README.md", "changelog.gz", "changelog.Debian.gz", "copyright")]
)


class Unit(configparser.RawConfigParser):
    """A unit file; what is given twice has both values, a line each."""

    class Values(dict):
        def __setitem__(self, key, value):
            if isinstance(value, list) and key in self:
                value = self[key] + value
            super().__setitem__(key, value)

    def __init__(self, path):
        super().__init__(strict=False, dict_type=self.Values, interpolation=None)
        self.optionxform = str
        self.read(path, encoding="utf-8")


class ServerPackage(MadePackage, unittest.TestCase):
    package = PACKAGE
    maker = (BUILD / "CPackServerConfig.cmake",)

    def test_tells_what_it_is_and_needs(self):
        for name, expected in {
            "Package": PACKAGE,
            "Version": rf"{re.escape(VERSION)}-1",
            "Section": r"net",
            "Description": r"[a-z][^\n]{20,60}[^.\n](\n [^\n]{1,79})+",
            "Suggests": r"nginx-light \| nginx",
            "Recommends": r"",
        }.items():
            with self.subTest(field=name):
                self.assertRegex(self.field(name), rf"\A{expected}\Z")
        needed = re.findall(r"(?:^|, )([^ ,]+)", self.field("Depends"))
        for library in ("libc6", "libmicrohttpd12", "libsqlite3-0", "libsodium23"):
            self.assertIn(library, needed)
        for unwanted in needed:
            self.assertNotRegex(unwanted, r"qt6|curl|-dev$|^libx")

    def test_holds_exactly_what_is_expected(self):
        found = sorted(str(path.relative_to(self.tree)) for path in self.tree.rglob("*") if not path.is_dir())
        self.assertEqual(found, EXPECTED)

    def test_shares_no_file_with_the_program_s_package(self):
        # Which is made of all that is installed without a component.
        with tempfile.TemporaryDirectory() as prefix:
            done = subprocess.run([os.environ["KV_CMAKE"], "--install", BUILD, "--prefix", f"{prefix}/usr"],
                                  capture_output=True, text=True, check=False)
            if done.returncode != 0:
                self.skipTest("the program has not been built")
            found = {str(path.relative_to(prefix)) for path in Path(prefix).rglob("*") if not path.is_dir()}
        self.assertGreater(len(found), 10)
        self.assertEqual(found & set(EXPECTED), set())
        self.assertEqual([name for name in found if "community" in name], [])

    def test_belongs_to_root_and_can_be_read_by_all(self):
        for line in run("dpkg-deb", "-c", self.packages[0]).splitlines():
            with self.subTest(line=line):
                mode, owner = line.split()[:2]
                self.assertEqual(owner, "root/root")
                is_program = line.endswith((f"/{SERVER}", f"/{ADMIN}"))
                self.assertEqual(mode[1:], "rwxr-xr-x" if mode[0] == "d" or is_program else "rw-r--r--")

    def test_keeps_what_a_host_wrote_into_its_configuration(self):
        self.assertEqual((self.control / "conffiles").read_text(encoding="utf-8"), f"/{DEFAULTS}\n")

    def test_its_scripts_are_sound_and_can_be_run(self):
        for name in ("postinst", "prerm", "postrm"):
            with self.subTest(script=name):
                self.assertEqual(stat.S_IMODE((self.control / name).stat().st_mode), 0o755)
                run("shellcheck", self.control / name)
                self.assertIn(f"{SERVICE}.service", (self.control / name).read_text(encoding="utf-8"))

    def test_its_scripts_enable_start_and_stop_the_service(self):
        # Beside a systemd that only notes what it is told; the scripts look for a real one by its folder.
        calls = Path(self.folder.name) / "calls"
        tools = Path(self.folder.name) / "tools"
        tools.mkdir()
        for tool in ("deb-systemd-helper", "deb-systemd-invoke", "systemctl"):
            (tools / tool).write_text(f'#!/bin/sh\necho "{tool} $*" >>"{calls}"\n', encoding="utf-8")
            (tools / tool).chmod(0o755)

        def called_by(script, *arguments):
            calls.write_text("", encoding="utf-8")
            text = (self.control / script).read_text(encoding="utf-8").replace("/run/systemd/system", str(tools))
            text = text.replace("/usr/bin/deb-systemd-helper", str(tools / "deb-systemd-helper"))
            run("sh", "-c", text, script, *arguments, env={"PATH": f"{tools}:/usr/bin:/bin"})
            return calls.read_text(encoding="utf-8")

        installed = called_by("postinst", "configure", "")
        self.assertIn(f"deb-systemd-helper enable {SERVICE}.service\n", installed)
        self.assertRegex(installed, rf"daemon-reload\ndeb-systemd-invoke restart {SERVICE}\.service\n\Z")
        self.assertEqual(called_by("prerm", "remove"), f"deb-systemd-invoke stop {SERVICE}.service\n")
        self.assertEqual(called_by("prerm", "upgrade", "2"), "")
        self.assertIn(f"deb-systemd-helper purge {SERVICE}.service\n", called_by("postrm", "purge"))

    def test_the_unit_starts_the_server_on_its_own_folder(self):
        service = Unit(self.tree / UNIT)["Service"]
        self.assertEqual(service["ExecStart"], f"/{SERVER}")
        self.assertEqual(service["Environment"], f"KV_COMMUNITY_DATA=/var/lib/{service['StateDirectory']}")
        self.assertEqual(service["EnvironmentFile"], f"-/{DEFAULTS}")
        # Where the host's tool looks unless told.
        self.assertIn(f"/var/lib/{service['StateDirectory']}.", run(self.tree / ADMIN, "--help"))

    def test_the_unit_is_hardened(self):
        service = Unit(self.tree / UNIT)["Service"]
        for name, value in {
            "DynamicUser": "yes", "NoNewPrivileges": "yes", "PrivateTmp": "yes", "ProtectHome": "yes",
            "ProtectSystem": "strict", "Restart": "on-failure", "MemoryMax": r"\d+M", "CapabilityBoundingSet": "",
            "RestrictAddressFamilies": "AF_INET AF_INET6", "SystemCallFilter": "@system-service\n.*",
        }.items():
            with self.subTest(setting=name):
                self.assertRegex(service[name], rf"\A{value}\Z")
        if shutil.which("systemd-analyze"):
            # In tenths: below 2.0 is what systemd calls well protected, 9.6 what it thinks of a unit with nothing.
            run("systemd-analyze", "security", "--offline=yes", "--no-pager", "--threshold=20", self.tree / UNIT)

    @unittest.skipUnless(shutil.which("systemd-analyze"), "systemd is not here; the unit is only parsed")
    def test_systemd_understands_the_unit(self):
        unit = Path(self.folder.name) / f"{SERVICE}.service"
        text = (self.tree / UNIT).read_text(encoding="utf-8")
        unit.write_text(text.replace(f"ExecStart=/{SERVER}", f"ExecStart={self.tree / SERVER}"), encoding="utf-8")
        self.assertEqual(run("systemd-analyze", "verify", "--man=no", unit), "")

    def test_every_setting_that_it_names_is_one(self):
        text = (self.tree / DEFAULTS).read_text(encoding="utf-8")
        settings = re.findall(r"(?m)^#(KV_COMMUNITY_\w+=.*)$", text)
        self.assertGreater(len(settings), 5)
        self.assertEqual(re.findall(r"(?m)^[^#\n].*", text), [])
        with tempfile.TemporaryDirectory() as data:
            said = self.serve(data, *settings[2:], "KV_COMMUNITY_PORT=0", "KV_COMMUNITY_PATH_PREFIX=/library",
                              ask="library/healthz")
        self.assertEqual(said, (200, "ok"))

    def test_serves_from_where_it_was_unpacked(self):
        with tempfile.TemporaryDirectory() as data:
            status, page = self.serve(data, "KV_COMMUNITY_PORT=0", ask="")
            self.assertEqual(status, 200)
            self.assertIn("Nothing has been shared yet.", page)
            self.assertEqual(run(self.tree / ADMIN, "--data", data, "check"), "All is well with 0 mappings and 0 files.\n")

    def serve(self, data, *environment, ask):
        """What the server answers to a GET below the root."""
        settings = dict(setting.split("=", 1) for setting in environment)
        with subprocess.Popen([self.tree / SERVER], env={"KV_COMMUNITY_DATA": data} | settings,
                              stdout=subprocess.PIPE, text=True) as server:
            try:
                address = re.match(r"http://[^/]+/", server.stdout.readline())
                self.assertIsNotNone(address)
                with urllib.request.urlopen(address[0] + ask, timeout=10) as reply:
                    return reply.status, reply.read().decode()
            finally:
                server.terminate()
                server.communicate(timeout=20)

    def test_its_manual_tells_every_option_and_command(self):
        for program, name in ((SERVER, "community_server"), (ADMIN, "community_admin")):
            manual = run("gzip", "-dc", self.tree / MANUALS / f"{name}.8.gz").replace("\\-", "-").replace("\\fR", "")
            self.assertIn(f'"kvOrvantaLogic_Tool {VERSION}"', manual)
            said = run(self.tree / program, "--help")
            for word in re.findall(r"(?m)^  (\S+)", said):
                if word not in ("--help", "--version"):
                    with self.subTest(word=word):
                        self.assertRegex(manual, rf"[\s\"]{re.escape(word)}\b")

    def test_the_programs_are_stripped_and_look_for_libraries_where_the_system_does(self):
        for program in (SERVER, ADMIN):
            self.assertNotRegex(run("readelf", "--section-headers", "--wide", self.tree / program), r"\.symtab|\.debug_")
            self.assertNotRegex(run("readelf", "--dynamic", self.tree / program), r"RPATH|RUNPATH")


if __name__ == "__main__":
    unittest.main()
