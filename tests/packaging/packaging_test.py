"""Installs the build into a temporary folder, makes the Debian package in another, and looks at what is in them.

Run by CTest, which says in the environment where the build is.
"""

import gzip
import os
import re
import stat
import struct
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from commands import MadePackage, run

BUILD = Path(os.environ["KV_BUILD"])
VERSION = os.environ["KV_VERSION"]
IDENTIFIER = os.environ["KV_BUNDLE_IDENTIFIER"]
PACKAGE = "kvorvantalogic-tool"
PNG_SIZES = [16, 24, 32, 48, 64, 128, 256, 512]

PROGRAM = "bin/kvOrvantaLogic_Tool"
ENTRY = f"share/applications/{IDENTIFIER}.desktop"
METADATA = f"share/metainfo/{IDENTIFIER}.metainfo.xml"
MODEL = "share/kvOrvantaLogic_Tool/kvOrvantaLogic_Tool.momd/Model.plist"
DOCUMENTS = f"share/doc/{PACKAGE}"
GUIDE = "share/kvOrvantaLogic_Tool/guide"
MANUAL = "share/man/man1/kvOrvantaLogic_Tool.1.gz"

GUIDE_SOURCE = Path(__file__).resolve().parents[2] / "docs/guide"


def guide_files():
    """Of the user guide, as they are shipped."""
    pages = [page.stem + ".html" for page in GUIDE_SOURCE.glob("*.md")]
    return pages + ["guide.css"] + [f"images/{picture.name}" for picture in (GUIDE_SOURCE / "images").glob("*.png")]


EXPECTED = sorted(
    [PROGRAM, ENTRY, METADATA, MODEL, MANUAL, f"share/icons/hicolor/scalable/apps/{IDENTIFIER}.svg"]
    + [f"share/icons/hicolor/{size}x{size}/apps/{IDENTIFIER}.png" for size in PNG_SIZES]
    + [f"{GUIDE}/{name}" for name in guide_files()]
    + [f"{DOCUMENTS}/{name}" for name in ("changelog.gz", "changelog.Debian.gz", "copyright")]
)


def files_below(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir())


def start_for_a_moment(program, home):
    """Lets the program run without a screen until it is ended; what it wrote, and how it ended if by itself."""
    environment = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen", "HOME": str(home),
                   "CFFIXED_USER_HOME": str(home), "XDG_RUNTIME_DIR": str(home), "KV_LOCAL_LIBRARY": str(home / "Library")}
    with subprocess.Popen([program], env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True) as process:
        try:
            output, _ = process.communicate(timeout=3)
            return output, process.returncode
        except subprocess.TimeoutExpired:
            process.kill()
            output, _ = process.communicate()
            return output, None


class InstalledTree(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.prefix = Path(cls.folder.name) / "usr"
        run(os.environ["KV_CMAKE"], "--install", BUILD, "--prefix", cls.prefix)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def text(self, name):
        return (self.prefix / name).read_text(encoding="utf-8")

    def entry(self):
        return dict(line.split("=", 1) for line in self.text(ENTRY).splitlines() if "=" in line)

    def test_holds_exactly_what_is_expected(self):
        self.assertEqual(files_below(self.prefix), EXPECTED)

    def test_the_desktop_entry_is_valid(self):
        self.assertEqual(run("desktop-file-validate", self.prefix / ENTRY), "")

    def test_the_metadata_is_valid(self):
        # The identifier is what the preferences are called by, so its capitals and its hyphen stay.
        report = run("appstreamcli", "validate", "--no-net", "--pedantic", "--no-color", self.prefix / METADATA)
        found = set(re.findall(r"^[A-Z]: \S+:\d+: (\S+)", report, re.MULTILINE))
        self.assertLessEqual(found, {"cid-contains-hyphen", "cid-contains-uppercase-letter"}, report)

    def test_the_entry_names_what_is_there(self):
        entry = self.entry()
        self.assertTrue((self.prefix / "bin" / entry["Exec"]).is_file())
        self.assertTrue((self.prefix / "share/icons/hicolor/scalable/apps" / (entry["Icon"] + ".svg")).is_file())
        # The class of the program's windows on X11; on Wayland it is the entry's own name.
        self.assertEqual(entry["StartupWMClass"], "kvOrvantaLogic_Tool")

    def test_the_metadata_names_the_entry(self):
        component = ElementTree.fromstring(self.text(METADATA))
        self.assertEqual(component.findtext("id"), IDENTIFIER)
        self.assertEqual(component.findtext("launchable"), Path(ENTRY).name)
        self.assertEqual(component.findtext("provides/binary"), Path(PROGRAM).name)
        categories = [category.text for category in component.findall("categories/category")]
        self.assertEqual(categories, self.entry()["Categories"].rstrip(";").split(";"))

    def test_every_place_tells_the_same_version(self):
        component = ElementTree.fromstring(self.text(METADATA))
        self.assertEqual(component.find("releases/release").get("version"), VERSION)
        with gzip.open(self.prefix / DOCUMENTS / "changelog.Debian.gz", "rt", encoding="utf-8") as changelog:
            self.assertRegex(changelog.readline(), rf"^{PACKAGE} \({re.escape(VERSION)}-\d+\) ")
        with gzip.open(self.prefix / MANUAL, "rt", encoding="utf-8") as manual:
            self.assertIn(f"kvOrvantaLogic_Tool {VERSION}", manual.readline())

    def test_the_guide_is_the_one_of_the_source(self):
        self.assertIn("<h1", self.text(f"{GUIDE}/index.html"))
        self.assertIn(VERSION, self.text(f"{GUIDE}/index.html"))
        for picture in (GUIDE_SOURCE / "images").glob("*.png"):
            self.assertEqual((self.prefix / GUIDE / "images" / picture.name).read_bytes(), picture.read_bytes())

    def test_every_icon_has_the_size_of_its_folder(self):
        for size in PNG_SIZES:
            with self.subTest(size=size):
                name = f"share/icons/hicolor/{size}x{size}/apps/{IDENTIFIER}.png"
                start = (self.prefix / name).read_bytes()[:24]
                self.assertEqual(start[:8], b"\x89PNG\r\n\x1a\n")
                self.assertEqual(struct.unpack(">II", start[16:24]), (size, size))

    def test_the_program_starts_from_there(self):
        with tempfile.TemporaryDirectory() as home:
            (Path(home) / "Library/Application Support/Logic/Plug-In Settings").mkdir(parents=True)
            (Path(home) / "Library/Audio/Presets").mkdir(parents=True)
            output, ended = start_for_a_moment(self.prefix / PROGRAM, Path(home))
        self.assertIsNone(ended, output)
        # Said by the offscreen platform itself whenever a window of a fixed size is shown.
        self.assertEqual(output.replace("This plugin does not support propagateSizeHints()\n", ""), "")


class DebianPackage(MadePackage, unittest.TestCase):
    package = PACKAGE
    maker = (BUILD / "CPackConfig.cmake", "-G", "DEB")

    def test_tells_what_it_is(self):
        for name, expected in {
            "Package": rf"{PACKAGE}",
            "Version": rf"{re.escape(VERSION)}-1",
            "Section": r"sound",
            "Priority": r"optional",
            "Maintainer": r"kvOrvantaLogic_Tool developers <[^<>@ ]+@[^<>@ ]+>",
            "Installed-Size": r"[1-9]\d+",
            "Description": r"[a-z][^\n]{20,60}[^.\n](\n [^\n]{1,79})+",
            "Homepage": r"",
        }.items():
            with self.subTest(field=name):
                self.assertRegex(self.field(name), rf"\A{expected}\Z")

    def test_needs_the_libraries_and_recommends_the_rest(self):
        needed = re.findall(r"(?:^|, )([^ ,]+)", self.field("Depends"))
        linked = run("readelf", "--dynamic", self.tree / "usr" / PROGRAM)
        for library, package in {
            "libc.so": "libc6",
            "libcurl.so": "libcurl4",
            "libQt6Core.so": "libqt6core6",
            "libQt6Gui.so": "libqt6gui6",
            "libQt6PrintSupport.so": "libqt6printsupport6",
            "libQt6Svg.so": "libqt6svg6",
            "libQt6Widgets.so": "libqt6widgets6",
            "libstdc++.so": "libstdc++6",
        }.items():
            with self.subTest(library=library):
                self.assertEqual(package in needed, f"[{library}." in linked)
        self.assertIn("libqt6widgets6", needed)
        self.assertIn("libcurl4", needed)
        self.assertIn("libqt6printsupport6", needed)
        self.assertEqual(len(needed), len(set(needed)), needed)
        for unwanted in needed:
            self.assertNotRegex(unwanted, r"-dev$|gtest|qt6test|sqlite")
        self.assertRegex(self.field("Recommends"), r"qt6-wayland, xdg-utils, fonts-")

    def test_holds_exactly_what_is_installed(self):
        self.assertEqual(files_below(self.tree), [f"usr/{name}" for name in EXPECTED])

    def test_belongs_to_root_and_can_be_read_by_all(self):
        for line in run("dpkg-deb", "-c", self.packages[0]).splitlines():
            with self.subTest(line=line):
                mode, owner = line.split()[:2]
                self.assertEqual(owner, "root/root")
                readable = {"d": "drwxr-xr-x", "-": "-rw-r--r--"}.get(mode[0])
                is_program = line.endswith(f"/{PROGRAM}")
                self.assertEqual(mode, "-rwxr-xr-x" if is_program else readable)

    def test_runs_nothing_when_it_is_installed_or_removed(self):
        self.assertEqual(files_below(self.control), ["control", "md5sums"])
        for name in files_below(self.control):
            self.assertEqual(stat.S_IMODE((self.control / name).stat().st_mode), 0o644)

    def test_the_sums_are_right(self):
        sums = (self.control / "md5sums").read_text(encoding="utf-8").splitlines()
        self.assertEqual(sorted(line.split(None, 1)[1] for line in sums), [f"usr/{name}" for name in EXPECTED])
        run("md5sum", "--check", "--strict", "--quiet", self.control / "md5sums", cwd=self.tree)

    def test_the_program_is_stripped_and_looks_for_libraries_where_the_system_does(self):
        program = self.tree / "usr" / PROGRAM
        self.assertNotRegex(run("readelf", "--section-headers", "--wide", program), r"\.symtab|\.debug_")
        self.assertNotRegex(run("readelf", "--dynamic", program), r"RPATH|RUNPATH")


if __name__ == "__main__":
    unittest.main()
