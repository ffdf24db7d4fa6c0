"""The pages in a headless Chromium, from a real server with names and comments that would be scripts."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
import zlib

from serving import Serving, mapping

CHROMIUM = shutil.which("chromium")
RUN = "document.title='ran';document.documentElement.id='ran'"
SCRIPT = f"<script>{RUN}</script>"
IMAGE = f"<img src=x onerror=\"{RUN}\">"
LINK = f"\"><svg onload={RUN}>"


def first_pixel(png):
    """Its colour, which no filter of a PNG changes."""
    return zlib.decompress(b"".join(chunks(png)))[1:4]


def chunks(png):
    start = 8
    while start < len(png):
        size = int.from_bytes(png[start:start + 4], "big")
        if png[start + 4:start + 8] == b"IDAT":
            yield png[start + 8:start + 8 + size]
        start += size + 12


@unittest.skipUnless(CHROMIUM, "Chromium is not here, so no page is looked at")
class Pages(Serving):
    documents = {}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        test = cls()
        test.log_in("Ada")
        test.share("Ada", "Echo", "Nice & warm\nמימין", mapping("Cutoff", "Drum & Bass"))
        test.share("Ada", SCRIPT, IMAGE + SCRIPT, mapping(SCRIPT, IMAGE, LINK))
        test.share("Ada", LINK, LINK, mapping("Cutoff"))

    def chromium(self, *options):
        with tempfile.TemporaryDirectory() as profile:
            done = subprocess.run([CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                                   "--hide-scrollbars", f"--user-data-dir={profile}", *options],
                                  capture_output=True, text=True, check=True, timeout=60,
                                  env={"PATH": os.environ["PATH"], "HOME": profile, "CFFIXED_USER_HOME": profile,
                                       "LC_ALL": "C.UTF-8"})
        return done.stdout

    def document(self, path):
        """What the browser made of a page after it ran what it would run."""
        if path not in self.documents:
            self.documents[path] = self.chromium("--dump-dom", self.address + path)
        return self.documents[path]

    def assertQuiet(self, document):
        self.assertNotRegex(document, r"<(script|img|svg)\b")
        self.assertNotRegex(document, r"<html[^>]* id=")
        self.assertRegex(document, r"<title>(?!ran)")

    def test_the_first_page_shows_names_and_runs_nothing(self):
        document = self.document("")
        self.assertQuiet(document)
        self.assertIn("<title>Community library</title>", document)
        self.assertIn("<bdi>Echo</bdi>", document)
        self.assertIn("<bdi>" + SCRIPT.replace("<", "&lt;").replace(">", "&gt;") + "</bdi>", document)
        self.assertEqual(len(re.findall(r"<th scope=\"row\">", document)), 3)

    def test_ways_lead_to_plug_ins_mappings_and_charts(self):
        for plugin, pot in (("Echo", "Drum &amp; Bass"), ("&lt;script", "&lt;img src=x onerror=")):
            with self.subTest(plugin=plugin):
                way = re.search(rf'href="(plugin\?name=[^"]+)"><bdi>{plugin}', self.document(""))[1]
                document = self.document(way)
                self.assertQuiet(document)
                self.assertIn(f"<td><bdi>{pot}", document)
                document = self.document(re.search(r'href="(mapping\?id=\d+)"', document)[1])
                self.assertQuiet(document)
                self.assertIn(f"<td><bdi>{pot}", document)
                file = re.search(r'href="(files/[0-9a-f]+\.plist)"', document)[1]
                self.assertEqual(self.ask("GET", "/" + file)[0], 200)

    def test_a_search_is_shown_and_runs_nothing(self):
        document = self.document("?search=%22%3E%3Cscript%3E" + RUN.replace("'", "%27"))
        self.assertQuiet(document)
        self.assertIn("No plug-in's name has that in it.", document)
        self.assertIn("<bdi>Echo</bdi>", self.document("?search=ECH"))

    def test_it_is_drawn_as_the_style_sheet_says_in_light_and_dark(self):
        for colour, options in ((b"\xf4\xf5\xf7", []), (b"\x16\x19\x1f", ["--blink-settings=preferredColorScheme=0"])):
            with self.subTest(colour=colour):
                picture = self.folder / "page.png"
                self.chromium(f"--screenshot={picture}", "--window-size=400,700", *options, self.address)
                self.assertEqual(first_pixel(picture.read_bytes()), colour)

    def test_headers_forbid_scripts_frames_and_other_places(self):
        for path in ("/", "/plugin?name=Echo", "/mapping?id=1", "/mapping?id=77"):
            with self.subTest(path=path):
                headers = self.ask("GET", path)[1]
                policy = dict(part.split(" ", 1) for part in headers["Content-Security-Policy"].split("; "))
                self.assertEqual(policy.pop("default-src"), "'none'")
                self.assertEqual(policy.pop("frame-ancestors"), "'none'")
                self.assertEqual(policy.pop("base-uri"), "'none'")
                self.assertEqual(policy, {"style-src": "'self'", "img-src": "'self'", "form-action": "'self'"})
                self.assertEqual(headers.get_all("X-Content-Type-Options"), ["nosniff"])
                self.assertEqual(headers["Referrer-Policy"], "no-referrer")


if __name__ == "__main__":
    unittest.main()
