"""Configures the tree for macOS, as far as that goes here, and looks at the bundle: what lies in it, and what is done to it
when it is installed. Nothing is compiled; a script stands for the program, others for Apple's and Qt's tools.

Run by CTest, which says in the environment what the build knows.
"""

import json
import os
import plistlib
import re
import struct
import tempfile
import unittest
from pathlib import Path

from commands import run

ROOT = Path(__file__).resolve().parents[2]
CMAKE = os.environ["KV_CMAKE"]
NAME = "kvOrvantaLogic_Tool"
ICON = f"Contents/Resources/{NAME}.icns"
MODEL = f"Contents/Resources/{NAME}.momd/Model.plist"
PROGRAM = f"Contents/MacOS/{NAME}"
GUIDE_SOURCE = ROOT / "docs/guide"
GUIDE = sorted("Contents/Resources/guide/" + name for name in (
    *(page.stem + ".html" for page in GUIDE_SOURCE.glob("*.md")), "guide.css",
    *(f"images/{picture.name}" for picture in (GUIDE_SOURCE / "images").glob("*.png"))))
# Where CMake finds Debian's libraries when it is told that this is another system; OpenGL is a framework there.
DEBIAN = f"/usr/lib/{os.environ['KV_LIBRARY_ARCHITECTURE']}"
FRAMEWORKS = "add_library(WrapOpenGL::WrapOpenGL INTERFACE IMPORTED GLOBAL)\n"

MACDEPLOYQT = """
mkdir -p "$1/Contents/Frameworks/QtCore.framework" "$1/Contents/PlugIns/platforms"
touch "$1/Contents/Frameworks/libother.dylib" "$1/Contents/PlugIns/platforms/libqcocoa.dylib"
"""
# The ten images of an icon: a type, and how many pixels it is wide. The two smallest are pixels, the others PNGs.
IMAGES = {"ic04": 16, "ic05": 32, "ic11": 32, "ic12": 64, "ic07": 128, "ic13": 256, "ic08": 256, "ic14": 512, "ic09": 512,
          "ic10": 1024}


def oldest_system():
    """As the check that compiles for macOS reads it."""
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r'CMAKE_OSX_DEPLOYMENT_TARGET "([\d.]+)"', text).group(1)


class Bundle(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.tree = cls.folder / "tree"
        cls.bundle = cls.tree / f"bin/{NAME}.app"
        cls.calls = cls.folder / "calls"
        tools = cls.folder / "tools"
        tools.mkdir()
        for name, body in {"macdeployqt": MACDEPLOYQT, "codesign": ""}.items():
            (tools / name).write_text(f'#!/bin/sh\necho {name} "$@" >>"{cls.calls}"\n{body}', encoding="utf-8")
            (tools / name).chmod(0o755)
        cls.environment = {key: value for key, value in os.environ.items() if key != "KV_SIGNING_IDENTITY"}
        cls.environment["PATH"] = f"{tools}:{os.environ['PATH']}"
        (cls.folder / "frameworks.cmake").write_text(FRAMEWORKS, encoding="utf-8")
        cls.configure(cls.tree)
        run(CMAKE, "--build", cls.tree, "--target", f"bin/{NAME}.app/{ICON}", f"bin/{NAME}.app/{MODEL}",
            *(f"bin/{NAME}.app/{name}" for name in GUIDE))
        (cls.bundle / PROGRAM).write_text("#!/bin/sh\n", encoding="utf-8")
        cls.information = plistlib.loads((cls.bundle / "Contents/Info.plist").read_bytes())

    @classmethod
    def configure(cls, tree, *options):
        return run(
            CMAKE, "-S", ROOT, "-B", tree, "-G", "Ninja", "-DCMAKE_SYSTEM_NAME=Darwin", "-DCMAKE_BUILD_TYPE=Release",
            "-DCMAKE_CXX_COMPILER=clang++", "-DCMAKE_CXX_COMPILER_WORKS=ON", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
            "-DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY", f"-DCMAKE_PREFIX_PATH={DEBIAN}/cmake",
            f"-DCMAKE_LIBRARY_PATH={DEBIAN}", f"-DCMAKE_PROJECT_INCLUDE={cls.folder}/frameworks.cmake", *options,
            env=cls.environment)

    def test_holds_exactly_what_is_expected(self):
        files = sorted(str(path.relative_to(self.bundle)) for path in self.bundle.rglob("*") if path.is_file())
        self.assertEqual(files, sorted(["Contents/Info.plist", ICON, MODEL, PROGRAM, *GUIDE]))

    def test_resources_lie_where_the_program_looks_for_them(self):
        commands = json.loads((self.tree / "compile_commands.json").read_text(encoding="utf-8"))
        command, = [entry["command"] for entry in commands if entry["file"].endswith("/SystemEffects.cpp")]
        folder = re.search(r'KV_RESOURCES_FOLDER=\\+"([^"\\]+)', command).group(1)
        model = (self.bundle / PROGRAM).parent / ".." / folder / f"{NAME}.momd/Model.plist"
        self.assertEqual(model.read_bytes(), (ROOT / f"resources/{NAME}.momd/Model.plist").read_bytes())
        guide = (self.bundle / PROGRAM).parent / ".." / folder / "guide/index.html"
        self.assertIn(os.environ["KV_VERSION"], guide.read_text(encoding="utf-8"))

    def test_a_tree_without_the_guides_converter_is_configured_too(self):
        with tempfile.TemporaryDirectory() as folder:
            said = self.configure(folder, "-DKV_CMARK=OFF")
            self.assertNotRegex(run(CMAKE, "--build", folder, "--target", "help"), r"(?m)^guide: |guide/index.html")
        self.assertIn("the user guide is not made", said)

    def test_information_names_what_is_there(self):
        self.assertEqual(self.information["CFBundleExecutable"], Path(PROGRAM).name)
        self.assertEqual(self.information["CFBundleIconFile"], Path(ICON).name)
        self.assertEqual(self.information["CFBundlePackageType"], "APPL")
        self.assertEqual(self.information["CFBundleIdentifier"], os.environ["KV_BUNDLE_IDENTIFIER"])
        self.assertEqual(self.information["CFBundleShortVersionString"], os.environ["KV_VERSION"])
        self.assertEqual(self.information["CFBundleVersion"], os.environ["KV_VERSION"])

    def test_tells_whose_it_is_as_the_debian_package_does(self):
        copyright_file = (ROOT / "resources/linux/debian/copyright").read_text(encoding="utf-8")
        owner = re.search(r"^Copyright: (.*)$", copyright_file, re.MULTILINE).group(1)
        self.assertEqual(self.information["NSHumanReadableCopyright"], f"Copyright © {owner}. All rights reserved.")

    def test_every_place_tells_the_same_oldest_system(self):
        oldest = oldest_system()
        self.assertEqual(self.information["LSMinimumSystemVersion"], oldest)
        commands = (self.tree / "compile_commands.json").read_text(encoding="utf-8")
        self.assertEqual(set(re.findall(r"-mmacosx-version-min=([\d.]+)", commands)), {oldest})
        readme = (ROOT / "README.md").read_text(encoding="utf-8")
        self.assertEqual(re.findall(r"macOS (\d[\d.]*) or later", readme), [oldest.removesuffix(".0")])

    def test_icon_has_all_ten_images(self):
        icon = (self.bundle / ICON).read_bytes()
        self.assertEqual(struct.unpack(">4sI", icon[:8]), (b"icns", len(icon)))
        found, start = {}, 8
        while start < len(icon):
            kind, length = struct.unpack(">4sI", icon[start:start + 8])
            image = icon[start + 8:start + length]
            found[kind.decode()] = self.size_of_pixels(image) if image[:4] == b"ARGB" else self.size_of_png(image)
            start += length
        self.assertEqual(found, IMAGES)

    def size_of_png(self, image):
        self.assertEqual(image[:8], b"\x89PNG\r\n\x1a\n")
        width, height = struct.unpack(">II", image[16:24])
        self.assertEqual(width, height)
        return width

    def size_of_pixels(self, image):
        """Four channels of bytes in runs, which begin with their length less one; a run of equal bytes with 125 more than
        its length."""
        count, start = 0, 4
        while start < len(image):
            head = image[start]
            count += head + 1 if head < 128 else head - 125
            start += head + 2 if head < 128 else 2
        side = round((count / 4) ** 0.5)
        self.assertEqual(count, 4 * side * side)
        return side

    def test_tour_and_server_are_built_there_too(self):
        targets = run(CMAKE, "--build", self.tree, "--target", "help")
        for target in ("kvtour", "community_server"):
            self.assertRegex(targets, rf"(?m)^{target}: phony")

    def test_the_image_is_made_by_cpack(self):
        settings = (self.tree / "CPackConfig.cmake").read_text(encoding="utf-8")
        self.assertIn('set(CPACK_GENERATOR "DragNDrop")', settings)
        self.assertIn(f'set(CPACK_PACKAGE_FILE_NAME "{NAME}-{os.environ["KV_VERSION"]}")', settings)

    def install(self, **environment):
        """The calls of Qt's and Apple's tools; in place of the bundle's path a word."""
        self.calls.unlink(missing_ok=True)
        with tempfile.TemporaryDirectory() as prefix:
            run(CMAKE, "--install", self.tree, "--prefix", prefix, env=self.environment | environment)
            self.assertTrue((Path(prefix) / f"{NAME}.app" / MODEL).is_file())
            text = self.calls.read_text(encoding="utf-8").replace(f"{Path(prefix)}/{NAME}.app", "BUNDLE")
        return text.splitlines()

    def test_is_made_whole_and_signed_ad_hoc_from_the_inside_out(self):
        self.assertEqual(self.install(), [
            "macdeployqt BUNDLE",
            "codesign --force --sign - BUNDLE/Contents/Frameworks/libother.dylib "
            "BUNDLE/Contents/PlugIns/platforms/libqcocoa.dylib BUNDLE/Contents/Frameworks/QtCore.framework",
            "codesign --force --sign - BUNDLE",
            "codesign --verify --deep --strict BUNDLE",
        ])

    def test_is_signed_for_apple_when_the_environment_names_who_signs(self):
        signings = self.install(KV_SIGNING_IDENTITY="Ada Example")[1:3]
        for signing in signings:
            self.assertTrue(signing.startswith("codesign --force --sign Ada Example --options runtime --timestamp BUNDLE"))

    def test_is_not_installed_when_its_signature_is_refused(self):
        codesign = self.folder / "tools/codesign"
        text = codesign.read_text(encoding="utf-8")
        self.addCleanup(codesign.write_text, text)
        codesign.write_text(text + "exit 1\n", encoding="utf-8")
        with self.assertRaises(AssertionError):
            self.install()


if __name__ == "__main__":
    unittest.main()
