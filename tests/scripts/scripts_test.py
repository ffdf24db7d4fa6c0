"""Runs the scripts in a tree of their own, with stand-ins first in PATH for what they call: what a system answers is chosen
here, and every call is noted. Where KV_BASH names another shell (macOS has bash 3.2), that one runs them."""

import os
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BASH = os.environ.get("KV_BASH", shutil.which("bash"))

# What a stand-in does beside noting how it was called.
STAND_INS = {
    "uname": "echo $KV_SYSTEM",
    "xcode-select": "",
    "brew": '[ "$2" != check ] || exit $KV_BREW_LACKS',
    "cmake": "",
    "ctest": "",
    "cpack": '[ $KV_SYSTEM = Linux ] && touch "$4/kvorvantalogic-tool_1_all.deb" || touch "$4/kvOrvantaLogic_Tool-1.dmg"',
    "codesign": "",
    "xcrun": "",
    "lipo": 'echo "$KV_PROCESSORS "',
    "open": "",
    "git": "",
    "xargs": "cat >/dev/null",
    "shellcheck": "",
    "id": "echo $KV_USER",
    "sudo": 'while [ "$1" != env ]; do shift; done; exec "$@"',
    "dpkg-query": r'for name; do case $name in -*|*\$*) ;; gone) ;; *) echo "$name installed" ;; esac; done',
    "apt-get": '[ "$KV_APT" != fails ] || { echo "apt: no such package"; exit 100; }',
}
# GNU's or Linux' alone.
NOT_ON_A_MAC = ["nproc", "timeout", "setsid", "flock", "tac", "md5sum", "sha256sum", "dpkg", "ldd", "Xvfb", "xdg-open"]

PROGRAM = r'''
for name in HOME CFFIXED_USER_HOME KV_LOCAL_LIBRARY XDG_CONFIG_HOME XDG_DATA_HOME QT_QPA_PLATFORM QT_PLUGIN_PATH; do
    eval "echo \"$name=\${$name-}\"" >>"$KV_NOTES/environment"
done
if [ -n "$KV_TOUR_OUTPUT" ]; then
    echo picture >"$KV_TOUR_OUTPUT/01.png"
    mkdir "$KV_TOUR_OUTPUT/guide"
    echo excerpt | tee "$KV_TOUR_OUTPUT/guide/pages.png" >"$KV_TOUR_OUTPUT/guide/readme-1.png"
    echo new >"$HOME/CSParameterOrder.plist.prev"
fi
trap 'exit 7' TERM
while [ "$KV_PROGRAM" = stays ]; do sleep 0.05; done
exit ${KV_STATUS:-0}
'''
SERVER = r'''
echo $PPID >>"$KV_NOTES/server-parent"
trap 'echo ended >>"$KV_NOTES/server-ended"' EXIT
[ "$KV_SERVER" != fails ] || exit 1
trap 'exit 0' TERM
echo http://127.0.0.1:8765/
while kill -0 $PPID 2>/dev/null; do sleep 0.05; done
trap - EXIT
'''


class ScriptsTest(unittest.TestCase):
    system = "Darwin"

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="kv scripts ")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        self.root = self.folder / "tree"
        self.home = self.folder / "home"
        self.notes = self.folder / "notes"
        self.tools = self.folder / "tools"
        for path in (self.root, self.home, self.notes, self.tools, self.folder / "tmp"):
            path.mkdir()
        shutil.copytree(ROOT / "scripts", self.root / "scripts")
        shutil.copy(ROOT / "Brewfile", self.root)
        self.write(self.root / "demo/library/Library/x", "x")
        self.write(self.root / "demo/library/home/CSParameterOrder.plist", "as it was")
        self.write(self.root / "build/release/CMakeCache.txt",
                   "KV_COMMUNITY_BASE_URL:STRING=http://127.0.0.1:8765/\nQt6Core_DIR:PATH=/qt/lib/cmake/Qt6Core\n")
        for name, body in STAND_INS.items():
            self.stand_in(self.tools / name, body)
        for name in NOT_ON_A_MAC:
            self.stand_in(self.tools / name, f'echo {name} >>"$KV_NOTES/not-on-a-mac"; exit 127')
        (self.tools / "bash").symlink_to(BASH)
        bundle = ".app/Contents/MacOS/kvOrvantaLogic_Tool" if self.system == "Darwin" else ""
        self.program = self.root / f"build/release/bin/kvOrvantaLogic_Tool{bundle}"
        self.stand_in(self.program, PROGRAM)
        self.stand_in(self.root / "build/release/bin/community_server", SERVER)
        self.environment = {"PATH": f"{self.tools}:/usr/bin:/bin", "HOME": str(self.home), "KV_NOTES": str(self.notes),
                            "TMPDIR": str(self.folder / "tmp"), "KV_SYSTEM": self.system, "KV_BREW_LACKS": "0",
                            "KV_PROCESSORS": "arm64", "KV_USER": "1000"}

    def tearDown(self):
        self.wait_until(lambda: len(self.note("server-ended")) == len(self.note("server-parent")))
        self.assertEqual(self.note("not-on-a-mac"), [])
        self.assertEqual(os.listdir(self.folder / "tmp"), [])

    def write(self, path, text):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def stand_in(self, path, body):
        # Noted at one go: some are called side by side.
        self.write(path, f'#!/bin/sh\nprintf "%s\\n" "{path.name}${{*:+ $*}}" >>"$KV_NOTES/calls"\n{body}\n')
        path.chmod(0o755)

    def start(self, script, *arguments, **more):
        return subprocess.Popen([self.root / "scripts" / script, *arguments], env=self.environment | more, text=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                start_new_session=True)

    def run_script(self, script, *arguments, status=0, **more):
        """What it said on standard output and on standard error."""
        with self.start(script, *arguments, **more) as process:
            try:
                said = process.communicate(timeout=60)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                raise
        self.assertEqual(process.returncode, status, said)
        return said

    def note(self, name):
        path = self.notes / name
        return path.read_text(encoding="utf-8").splitlines() if path.exists() else []

    def calls(self, *names):
        return [call for call in self.note("calls") if call.split()[0] in names]

    def seen(self):
        return dict(line.split("=", 1) for line in self.note("environment"))

    def wait_until(self, holds):
        for _ in range(200):
            if holds():
                return
            time.sleep(0.05)
        self.fail("it does not come about")


class SetUpOnAMac(ScriptsTest):
    def test_asks_alone_when_nothing_is_missing(self):
        self.assertEqual(self.run_script("setup"), ("", ""))
        self.assertEqual(self.calls("brew"), [f"brew bundle check --no-upgrade --file={self.root}/Brewfile"])

    def test_installs_what_the_brewfile_lists_and_upgrades_nothing(self):
        self.run_script("setup", KV_BREW_LACKS="1")
        self.assertEqual(self.calls("brew")[1:], [f"brew bundle install --no-upgrade --file={self.root}/Brewfile"])

    def test_the_brewfile_lists_what_is_needed(self):
        lines = (self.root / "Brewfile").read_text(encoding="utf-8").splitlines()
        listed = [line.split('"')[1] for line in lines if line.startswith("brew ")]
        self.assertLessEqual({"cmake", "ninja", "qt", "googletest", "pkgconf", "libmicrohttpd", "libsodium"}, set(listed))

    def test_says_how_to_get_what_it_cannot_install(self):
        self.stand_in(self.tools / "xcode-select", "exit 2")
        self.assertIn("xcode-select --install", self.run_script("setup", status=1)[1])
        self.assertEqual(self.calls("brew"), [])
        self.stand_in(self.tools / "xcode-select", "")
        (self.tools / "brew").unlink()
        self.assertIn("https://brew.sh", self.run_script("setup", status=1)[1])

    def test_fails_when_homebrew_does(self):
        self.stand_in(self.tools / "brew", "exit 3")
        self.run_script("setup", status=3)


class SetUpOnDebian(ScriptsTest):
    system = "Linux"

    def set_up(self, packages, **more):
        self.write(self.root / "scripts/packages.txt", packages)
        return self.run_script("setup", **more)

    def test_leaves_apt_alone_when_nothing_is_missing(self):
        self.assertEqual(self.set_up("# a\n\ng++ # b\ncmake\n"), ("", ""))
        self.assertEqual(len(self.calls("dpkg-query")), 1)
        self.assertEqual(self.calls("apt-get", "sudo"), [])

    def test_installs_what_is_missing(self):
        for user, sudo in (("0", []), ("1000", ["sudo -n env"])):
            with self.subTest(user=user):
                (self.notes / "calls").write_text("")
                said = self.set_up("cmake\ngone\n", KV_USER=user)[1]
                self.assertEqual(said, "setup: installing gone\n")
                update, install = self.calls("apt-get")
                self.assertRegex(update, r" update\Z")
                self.assertRegex(install, r" install --no-install-recommends gone\Z")
                self.assertEqual([call[:11] for call in self.calls("sudo")], sudo * 2)

    def test_tells_what_apt_said_when_it_failed(self):
        said = self.set_up("gone\n", KV_USER="0", KV_APT="fails", status=1)[1]
        self.assertIn("apt: no such package\nsetup: installing the packages failed, see above\n", said)

    def test_refuses_other_systems(self):
        (self.tools / "dpkg-query").unlink()
        if shutil.which("dpkg-query", path="/usr/bin:/bin"):
            self.environment["PATH"] = str(self.tools)
            for name in ("env", "dirname"):
                (self.tools / name).symlink_to(shutil.which(name))
        self.assertIn("not a Debian system", self.run_script("setup", status=1)[1])


class Run(ScriptsTest):
    """On a Mac there is always a display."""

    def copy(self):
        return self.home / ".cache/kvOrvantaLogic_Tool-demo"

    def test_opens_the_bundle_on_the_demo_library_beside_the_community_server(self):
        self.run_script("run")
        copy = self.copy()
        calls = self.note("calls")
        self.assertEqual([call.split()[0] for call in calls if "uname" not in call],
                         ["xcode-select", "brew", "cmake", "cmake", "community_server", "kvOrvantaLogic_Tool"])
        self.assertRegex(calls[-3], r"\Acmake --build --preset release --parallel [1-9]\d* "
                         r"--target kvOrvantaLogic_Tool community_server kvtour\Z")
        parent, = self.note("server-parent")
        self.assertEqual(calls[-2], f"community_server --port 8765 --data {copy}/community "
                         f"--seed {self.root}/demo/community --with-parent {parent}")
        seen = self.seen()
        self.assertEqual(seen["HOME"], f"{copy}/home")
        self.assertEqual(seen["CFFIXED_USER_HOME"], seen["HOME"])
        self.assertEqual(seen["KV_LOCAL_LIBRARY"], f"{copy}/Library")
        self.assertTrue(seen["XDG_CONFIG_HOME"].startswith(seen["HOME"]))
        self.assertTrue((copy / "Library/x").is_file())

    def test_keeps_the_copy_of_the_demo_library_until_it_is_to_be_fresh(self):
        for option, expected in ((), "x"), ((), "mine"), (("--fresh",), "x"):
            self.run_script("run", *option)
            self.assertEqual((self.copy() / "Library/x").read_text(), expected)
            self.write(self.copy() / "Library/x", "mine")

    def test_mine_are_the_user_s_own_folders(self):
        self.run_script("run", "--mine", KV_STATUS="5", status=5)
        self.assertEqual(self.seen()["HOME"], str(self.home))
        self.assertEqual(self.seen()["CFFIXED_USER_HOME"] + self.seen()["KV_LOCAL_LIBRARY"], "")
        self.assertEqual(self.calls("community_server"), [])

    def test_runs_without_a_server_that_does_not_start(self):
        said = self.run_script("run", KV_SERVER="fails")[1]
        self.assertEqual(said, "run: the community server did not start; the program runs all the same\n")
        self.assertEqual(len(self.calls("kvOrvantaLogic_Tool")), 1)

    def test_needs_no_server_of_its_own_for_one_elsewhere(self):
        self.write(self.root / "build/release/CMakeCache.txt", "KV_COMMUNITY_BASE_URL:STRING=http://library.example/\n")
        self.run_script("run", KV_STATUS="4", status=4)
        self.assertEqual(self.calls("community_server"), [])

    def test_a_signal_ends_program_and_server(self):
        with self.start("run", KV_PROGRAM="stays") as process:
            self.wait_until(lambda: self.note("environment"))
            process.send_signal(signal.SIGTERM)
            process.communicate(timeout=60)
        self.assertEqual(process.returncode, 7)

    def test_the_tour_needs_no_screen_and_keeps_what_was_written(self):
        self.run_script("run", "--tour")
        seen = self.seen()
        self.assertEqual(seen["QT_QPA_PLATFORM"], "offscreen")
        self.assertEqual(seen["QT_PLUGIN_PATH"], f"{self.root}/build/release/tour-plugins")
        self.assertTrue(seen["HOME"].startswith(str(self.folder / "tmp")))
        self.assertEqual(seen["CFFIXED_USER_HOME"], seen["HOME"])
        output = self.root / "demo-output"
        written = sorted(str(path.relative_to(output)) for path in output.rglob("*") if path.is_file())
        self.assertEqual(written, ["01.png", "files/home/CSParameterOrder.plist.prev", "guide/pages.png",
                                   "guide/readme-1.png", "log.txt"])

    def test_the_pictures_of_the_documents_are_made_anew(self):
        documents = self.root / "docs"
        for former in ("guide/images/former.png", "images/former.png"):
            self.write(documents / former, "former")
        self.run_script("guide-pictures")
        made = {str(path.relative_to(documents)): path.read_text(encoding="utf-8") for path in documents.rglob("*.png")}
        self.assertEqual(made, {"guide/images/pages.png": "excerpt\n", "images/readme-1.png": "excerpt\n"})

    def test_a_tour_as_built_sets_nothing_up(self):
        self.run_script("run", "--tour-as-built", self.folder / "there")
        self.assertTrue((self.folder / "there/01.png").is_file())
        self.assertEqual(self.calls("brew", "cmake"), [])

    def test_a_tour_without_its_server_fails(self):
        self.assertIn("did not start", self.run_script("run", "--tour", KV_SERVER="fails", status=1)[1])

    def test_a_tour_has_an_end(self):
        # In a second instead of five minutes.
        self.stand_in(self.tools / "perl", 'script=$2; [ "$3" = 300 ] || exit 9; shift 3; exec /usr/bin/perl -e "$script" 1 "$@"')
        said = self.run_script("run", "--tour", KV_PROGRAM="stays", status=128 + signal.SIGALRM)[1]
        self.assertIn("run: the tour ended with exit code 142; its whole log is ", said)

    def test_refuses_what_it_does_not_know(self):
        for arguments, problem in {("--nonsense",): "unknown option: --nonsense", ("--mine", "--tour"): "one option at a time",
                                   ("--tour-as-built",): "--tour-as-built takes a folder"}.items():
            said = self.run_script("run", *arguments, status=2)[1]
            self.assertTrue(said.startswith(f"run: {problem}\nUsage: scripts/run "), said)
        self.assertTrue(self.run_script("run", "--help")[0].startswith("Usage: scripts/run "))
        self.assertEqual(self.calls("brew", "cmake"), [])


class RunOnLinux(ScriptsTest):
    system = "Linux"

    def test_without_a_display_it_takes_the_tour_and_mine_are_not_opened(self):
        said = self.run_script("run")[0]
        self.assertIn("No display here: taking the tour", said)
        self.assertTrue((self.root / "demo-output/01.png").is_file())
        self.assertEqual(self.run_script("run", "--mine", status=1)[1], "run: --mine needs a display\n")


class TestScript(ScriptsTest):
    def test_builds_and_tests_and_leaves_the_layout_to_debian_s_tools(self):
        self.run_script("test", "-R", "mapping")
        self.assertRegex("\n".join(self.calls("cmake", "ctest")), r"\Acmake --preset release\n"
                         r"cmake --build --preset release --parallel [1-9]\d*\n"
                         r"ctest --preset release --parallel [1-9]\d* -R mapping\Z")
        self.assertEqual(self.calls("git", "shellcheck"), [])


class TestScriptOnLinux(ScriptsTest):
    system = "Linux"

    def test_looks_at_the_layout_before_it_builds(self):
        self.write(self.root / "scripts/packages.txt", "cmake\n")
        self.run_script("test")
        names = [call.split()[0] for call in self.calls("cmake", "git", "ctest")]
        self.assertEqual(names, ["cmake", "git", "git", "cmake", "ctest"])


class Package(ScriptsTest):
    def image(self, build="release"):
        return f"{self.root}/build/{build}/kvOrvantaLogic_Tool-1.dmg"

    def package(self, **more):
        said = self.run_script("package", **more)[0]
        return said.splitlines()[-1]

    def test_makes_an_image_and_says_where(self):
        self.write(self.root / "build/release/kvOrvantaLogic_Tool-0.dmg", "of another version")
        self.assertEqual(self.package(), self.image())
        self.assertEqual(self.calls("lipo"), ["lipo -archs /qt/lib/cmake/Qt6Core/../../QtCore.framework/QtCore"])
        self.assertRegex("\n".join(self.calls("cmake", "cpack", "codesign", "xcrun")),
                         r"\Acmake --preset release\n"
                         r"cmake --build build/release --target kvOrvantaLogic_Tool --parallel [1-9]\d*\n"
                         r"cpack --config build/release/CPackConfig.cmake -B build/release\Z")

    def test_is_for_every_processor_that_qt_is_for(self):
        (self.root / "build/universal").mkdir()
        self.assertEqual(self.package(KV_PROCESSORS="x86_64 arm64"), self.image("universal"))
        self.assertEqual(self.calls("cmake")[1], "cmake --preset release -B build/universal "
                         "-DCMAKE_OSX_ARCHITECTURES=x86_64;arm64")
        self.assertTrue(self.calls("cmake")[2].startswith("cmake --build build/universal --target"))
        self.assertEqual(self.calls("cpack"), ["cpack --config build/universal/CPackConfig.cmake -B build/universal"])

    def test_is_signed_as_the_environment_says(self):
        self.package(KV_SIGNING_IDENTITY="Developer ID Application: Ada")
        self.assertEqual(self.calls("codesign", "xcrun"),
                         [f"codesign --force --timestamp --sign Developer ID Application: Ada {self.image()}"])

    def test_is_notarised_as_the_environment_says(self):
        self.package(KV_SIGNING_IDENTITY="Ada", KV_NOTARY_PROFILE="us")
        self.assertEqual(self.calls("cpack", "codesign", "xcrun")[1:],
                         [f"codesign --force --timestamp --sign Ada {self.image()}",
                          f"xcrun notarytool submit {self.image()} --keychain-profile us --wait",
                          f"xcrun stapler staple {self.image()}"])

    def test_apple_notarises_only_what_is_signed(self):
        said = self.run_script("package", KV_NOTARY_PROFILE="us", status=2)[1]
        self.assertEqual(said, "package: KV_NOTARY_PROFILE needs KV_SIGNING_IDENTITY\n")
        self.assertEqual(self.note("calls"), [])

    def test_leaves_the_server_s_package_to_debian(self):
        said = self.run_script("package", "--server", status=2)[1]
        self.assertEqual(said, "package: the server's package is made on Debian\n")
        self.assertEqual(self.calls("cmake", "cpack"), [])

    def test_fails_when_apple_refuses(self):
        self.stand_in(self.tools / "xcrun", "exit 65")
        self.run_script("package", KV_SIGNING_IDENTITY="Ada", KV_NOTARY_PROFILE="us", status=65)


class PackageOnDebian(ScriptsTest):
    system = "Linux"

    def test_makes_a_debian_package_and_says_where(self):
        self.write(self.root / "scripts/packages.txt", "cmake\n")
        said = self.run_script("package", KV_SIGNING_IDENTITY="Ada")[0]
        self.assertEqual(said, f"{self.root}/build/release/kvorvantalogic-tool_1_all.deb\n")
        self.assertEqual(self.calls("lipo", "codesign", "xcrun"), [])

    def test_makes_the_server_s_package_beside_it(self):
        self.write(self.root / "scripts/packages.txt", "cmake\n")
        kept = self.root / "build/release/kvorvantalogic-tool_0_all.deb"
        self.write(kept, "the program's")
        (self.root / "build/release/server").mkdir()
        said = self.run_script("package", "--server")[0]
        self.assertTrue(said.startswith(f"{self.root}/build/release/server/"), said)
        self.assertRegex("\n".join(self.calls("cmake", "cpack")),
                         r"\Acmake --preset release\n"
                         r"cmake --build build/release --target community_server community_admin --parallel [1-9]\d*\n"
                         r"cpack --config build/release/CPackServerConfig.cmake -B build/release/server\Z")
        self.assertTrue(kept.exists())

    def test_makes_nothing_that_it_does_not_know(self):
        self.assertEqual(self.run_script("package", "--sever", status=2)[1], "package: unknown option: --sever\n")
        self.assertEqual(self.note("calls"), [])


del ScriptsTest  # it has no tests of its own


if __name__ == "__main__":
    unittest.main()
