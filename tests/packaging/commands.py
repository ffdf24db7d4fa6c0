"""What the tests of the packages share."""

import os
import subprocess
import tempfile
from pathlib import Path


def run(*command, **options):
    """What it printed; a test fails when it did not end well."""
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))} gave {done.returncode}:\n{done.stdout}")
    return done.stdout


class MadePackage:
    """A test of the Debian package called `package` that CPack makes of `maker`, its configuration and options."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        folder = Path(cls.folder.name)
        # Under a strict mask, which must not show in the package.
        run(os.environ["KV_CPACK"], "--config", *cls.maker, "-B", folder, umask=0o077)
        cls.packages = list(folder.glob("*.deb"))
        cls.tree = folder / "tree"
        cls.control = folder / "control"
        if cls.packages:
            run("dpkg-deb", "-x", cls.packages[0], cls.tree)
            run("dpkg-deb", "-e", cls.packages[0], cls.control)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def field(self, name):
        return run("dpkg-deb", "-f", self.packages[0], name).rstrip("\n")

    def test_is_one_file_called_as_debian_calls_packages(self):
        architecture = run("dpkg", "--print-architecture").strip()
        version = os.environ["KV_VERSION"]
        self.assertEqual([made.name for made in self.packages], [f"{self.package}_{version}-1_{architecture}.deb"])
