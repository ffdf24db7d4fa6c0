"""A screen of the test's own: an X server, a session bus with the accessibility bus on it, and the real program in a
temporary home folder. What the program shows is read and worked as a screen reader does it, through the bus."""

import contextlib
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path


class NoScreen(Exception):
    """No X server can be started here."""


class Screen:
    """Everything that was started ends with it, in the opposite order."""

    def __init__(self):
        self._ending = contextlib.ExitStack()
        self.folder = Path(self._ending.enter_context(tempfile.TemporaryDirectory(prefix="kv-accessibility-")))
        try:
            self._start_x_server()
            self._start_bus()
        except BaseException:
            self.close()
            raise

    def close(self):
        self._ending.close()

    def _spawn(self, command, **more):
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, start_new_session=True, **more)
        self._ending.callback(end, process)
        return process

    def _start_x_server(self):
        if not shutil.which("Xvfb"):
            raise NoScreen("Xvfb is not installed")
        reading, writing = os.pipe()
        with open(self.folder / "xvfb.txt", "wb") as messages:
            self._spawn(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24", "-nolisten", "tcp"],
                        pass_fds=[writing], stdout=messages, stderr=messages)
        os.close(writing)
        with open(reading, encoding="ascii") as answer:
            number = answer.readline().strip()
        if not number:
            raise NoScreen("Xvfb does not start: " + (self.folder / "xvfb.txt").read_text(errors="replace"))
        self._environment = {
            "PATH": os.environ["PATH"],
            "DISPLAY": f":{number}",
            "LC_ALL": "C.UTF-8",
            "HOME": str(self.folder / "library/home"),
            "CFFIXED_USER_HOME": str(self.folder / "library/home"),
            "XDG_CONFIG_HOME": str(self._folder("config")),
            "XDG_DATA_HOME": str(self._folder("data")),
            "XDG_STATE_HOME": str(self._folder("state")),
            "XDG_CACHE_HOME": str(self._folder("cache")),
            "XDG_RUNTIME_DIR": str(self._folder("runtime")),
            "KV_LOCAL_LIBRARY": str(self.folder / "library/Library"),
        }

    def _start_bus(self):
        bus = self._spawn(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, env=self._environment)
        self._environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()
        # The client's side of the bus lives in this process.
        os.environ.update(self._environment)

    def _folder(self, name):
        path = self.folder / name
        path.mkdir(mode=0o700, exist_ok=True)
        return path

    def run(self, program, **more):
        """Starts the program, with more in its environment; whoever does ends it with `end`, or it ends with the
        screen."""
        with open(self.folder / "log.txt", "wb") as log:
            return self._spawn([program], stdout=log, stderr=log, env=self._environment | {
                "QT_QPA_PLATFORM": "xcb",
                "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            } | more)


def end(process):
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGTERM)
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
    if process.stdout:
        process.stdout.close()


def wait_for(what, seconds=10):
    """What `what` gives as soon as it is true, or its last answer."""
    end = time.monotonic() + seconds
    while True:
        answer = what()
        if answer or time.monotonic() > end:
            return answer
        time.sleep(0.02)
