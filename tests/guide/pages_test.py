"""Makes the user guide and goes through it as a reader's browser would: every link, every anchor, every picture. Then the
same for the links of the README and the other documents of the tree. pages_test.py CMARK"""

import re
import struct
import subprocess
import sys
import tempfile
import unittest
from html.parser import HTMLParser
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
GUIDE = ROOT / "docs/guide"
MAKER = ROOT / "tools/guide/make_html.py"
CMARK = sys.argv.pop(1)
VERSION = "1.2.3"

LARGEST_PICTURE = 150 * 1024
ALL_PICTURES = 2 * 1024 * 1024


class Page(HTMLParser):
    VOID = {"meta", "link", "img", "br", "hr"}

    def __init__(self, path):
        super().__init__()
        self.anchors, self.links, self.pictures, self.tags, self.open = [], [], [], [], []
        self.language = self.title = self.styles = None
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        found = dict(attributes)
        self.tags.append(tag)
        if tag not in self.VOID:
            self.open.append(tag)
        if "id" in found:
            self.anchors.append(found["id"])
        if tag == "a":
            self.links.append(found["href"])
        elif tag == "img":
            self.pictures.append((found["src"], found.get("alt", "")))
        elif tag == "html":
            self.language = found["lang"]
        elif tag == "link" and found["rel"] == "stylesheet":
            self.styles = found["href"]

    def handle_endtag(self, tag):
        if tag not in self.VOID:
            assert self.open.pop() == tag, tag

    def handle_data(self, data):
        if self.open[-1:] == ["title"]:
            self.title = data


def local(link):
    return not re.match(r"[a-z]+:", link)


class Guide(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.made = Path(folder.name)
        cls.make(GUIDE, cls.made)
        cls.pages = {path.name: Page(path) for path in cls.made.glob("*.html")}

    @staticmethod
    def make(source, output):
        subprocess.run([sys.executable, "-B", MAKER, CMARK, source, output, VERSION], check=True)

    def test_every_page_is_made(self):
        self.assertEqual(sorted(self.pages), sorted(page.stem + ".html" for page in GUIDE.glob("*.md")))
        self.assertIn("index.html", self.pages)

    def test_every_link_leads_to_a_page_and_every_anchor_is_there(self):
        for name, page in self.pages.items():
            for link in filter(local, page.links):
                with self.subTest(page=name, link=link):
                    target, _, anchor = link.partition("#")
                    self.assertIn(target or name, self.pages)
                    if anchor:
                        self.assertIn(anchor, self.pages[target or name].anchors)

    def test_links_to_elsewhere_are_safe_ones(self):
        for name, page in self.pages.items():
            for link in page.links:
                with self.subTest(page=name, link=link):
                    self.assertTrue(local(link) or link.startswith("https://"))

    def test_every_page_leads_to_all_the_others(self):
        for name, page in self.pages.items():
            self.assertEqual(set(self.pages) - set(page.links), set(), name)

    def test_no_two_headings_of_a_page_have_one_anchor(self):
        for name, page in self.pages.items():
            self.assertEqual(len(page.anchors), len(set(page.anchors)), name)

    def test_every_picture_is_there_described_and_shown(self):
        shown = set()
        for name, page in self.pages.items():
            for source, description in page.pictures:
                with self.subTest(page=name, picture=source):
                    self.assertTrue((self.made / source).is_file())
                    self.assertGreater(len(description), 10)
                    shown.add(source)
        self.assertEqual({f"images/{path.name}" for path in (self.made / "images").iterdir()}, shown)

    def test_pictures_are_small(self):
        sizes = {path.name: path.stat().st_size for path in (GUIDE / "images").iterdir()}
        self.assertEqual([name for name, size in sizes.items() if size > LARGEST_PICTURE], [])
        self.assertLess(sum(sizes.values()), ALL_PICTURES)
        for name in sizes:
            self.assertEqual((GUIDE / "images" / name).read_bytes()[:8], b"\x89PNG\r\n\x1a\n", name)

    def test_pages_tell_what_they_are_without_scripts(self):
        for name, page in self.pages.items():
            with self.subTest(page=name):
                self.assertEqual(page.open, [])
                self.assertEqual(page.language, "en-GB")
                self.assertEqual(page.styles, "guide.css")
                self.assertTrue((self.made / page.styles).is_file())
                self.assertTrue(page.title)
                self.assertEqual(page.tags.count("h1"), 1)
                self.assertNotIn("script", page.tags)
                self.assertIn(VERSION, (self.made / name).read_text(encoding="utf-8"))
        self.assertEqual(len({page.title for page in self.pages.values()}), len(self.pages))

    def test_there_are_tables_and_anchors(self):
        self.assertIn("table", self.pages["keys.html"].tags)
        self.assertIn("file-menu", self.pages["keys.html"].anchors)

    def test_markup_is_left_to_the_converter(self):
        """It drops HTML of the source, and what stands in a pair of stars it has not understood would be seen as stars."""
        for name in self.pages:
            text = (self.made / name).read_text(encoding="utf-8")
            self.assertNotIn("raw HTML omitted", text, name)
            self.assertNotRegex(re.sub(r"(?s)<(code|pre)>.*?</\1>", "", text), r"\*\*|\]\(|^#", name)

    def test_anchors_are_the_usual_ones_and_a_page_that_nobody_finds_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            source = Path(folder) / "source"
            (source / "images").mkdir(parents=True)
            for name, text in {"index.md": "# One\n\n[Two](two.md)\n", "two.md": "# Two\n\n## What's `new` & *good*\n",
                               "guide.css": ""}.items():
                (source / name).write_text(text, encoding="utf-8")
            self.make(source, Path(folder) / "made")
            # As on the pages of a repository.
            self.assertEqual(Page(Path(folder) / "made/two.html").anchors, ["two", "whats-new--good"])
            (source / "three.md").write_text("# Three\n", encoding="utf-8")
            with self.assertRaises(subprocess.CalledProcessError):
                self.make(source, Path(folder) / "made")

    def test_colours_can_be_read_in_light_and_dark(self):
        style = (GUIDE / "guide.css").read_text(encoding="utf-8")
        schemes = re.findall(r":root \{(.*?)\}", style, re.DOTALL)
        self.assertEqual(len(schemes), 2)
        for scheme in schemes:
            colours = dict(re.findall(r"--(\w+): (#\w{6});", scheme))
            for above in ("text", "faint", "link"):
                for below in ("background", "raised"):
                    with self.subTest(above=above, below=below):
                        self.assertGreaterEqual(contrast(colours[above], colours[below]), 4.5)


def contrast(one, other):
    def luminance(colour):
        channels = [channel / 255 for channel in struct.unpack("BBB", bytes.fromhex(colour[1:]))]
        linear = [value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4 for value in channels]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]
    lighter, darker = sorted((luminance(one), luminance(other)), reverse=True)
    return (lighter + 0.05) / (darker + 0.05)


class Documents(unittest.TestCase):
    def test_their_links_and_pictures_are_there(self):
        for path in [*ROOT.glob("*.md"), *(ROOT / "docs").glob("*.md")]:
            text = path.read_text(encoding="utf-8")
            for link in re.findall(r'\]\(([^)\s]+)\)|(?:src|href)="([^"]+)"', text):
                target = "".join(link).partition("#")[0]
                if target and local(target):
                    with self.subTest(document=path.name, link=target):
                        self.assertTrue((path.parent / target).exists())


if __name__ == "__main__":
    unittest.main()
