#!/usr/bin/env python3
"""Makes the user guide's HTML of its Markdown.

Usage: make_html.py CMARK SOURCE OUTPUT VERSION

CMARK is cmark-gfm, which knows tables. Each page of the folder SOURCE becomes an HTML page of the folder OUTPUT, with links
to all the others; the pictures and the style sheet go along.
"""

import html
import re
import shutil
import subprocess
import sys
from pathlib import Path

STYLE = "guide.css"
IMAGES = "images"
PAGE = """<!DOCTYPE html>
<html lang="en-GB">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>{title}</title>
<link rel="stylesheet" href="{style}">
</head>
<body>
<nav aria-label="Pages of the guide">
{navigation}
</nav>
<main>
{body}</main>
<footer>kvOrvantaLogic Tool {version}</footer>
</body>
</html>
"""


def anchor_of(heading):
    """What a heading's anchor is called, here as on the pages of a repository."""
    return re.sub(r"[^\w\- ]", "", html.unescape(re.sub(r"<[^>]*>", "", heading)).lower()).replace(" ", "-")


def with_anchors(body):
    return re.sub(r"<h([1-6])>(.*?)</h\1>",
                  lambda found: f'<h{found[1]} id="{anchor_of(found[2])}">{found[2]}</h{found[1]}>', body, flags=re.DOTALL)


def with_links_to_html(body):
    return re.sub(r'href="([\w-]+)\.md(#[^"]*)?"', lambda found: f'href="{found[1]}.html{found[2] or ""}"', body)


def title_of(body):
    return re.search(r"<h1[^>]*>(.*?)</h1>", body, re.DOTALL)[1]


def pages_in_order(source):
    """The index, then the pages as it first links them."""
    linked = re.findall(r"\]\(([\w-]+\.md)[#)]", (source / "index.md").read_text(encoding="utf-8"))
    return list(dict.fromkeys(["index.md", *linked]))


def body_of(cmark, page):
    body = subprocess.run([cmark, "--extension", "table", "--to", "html", str(page)], check=True, stdout=subprocess.PIPE,
                          encoding="utf-8").stdout
    return with_anchors(with_links_to_html(body))


def navigation_for(current, titles):
    rows = []
    for name, title in titles.items():
        mark = ' aria-current="page"' if name == current else ""
        rows.append(f'<li><a href="{name[:-3]}.html"{mark}>{title}</a></li>')
    return "<ul>\n{}\n</ul>".format("\n".join(rows))


def make(cmark, source, output, version):
    names = pages_in_order(source)
    left_out = {page.name for page in source.glob("*.md")} - set(names)
    if left_out:
        sys.exit(f"index.md links no {', '.join(sorted(left_out))}")
    bodies = {name: body_of(cmark, source / name) for name in names}
    titles = {name: title_of(body) for name, body in bodies.items()}
    (output / IMAGES).mkdir(parents=True, exist_ok=True)
    for name, body in bodies.items():
        page = PAGE.format(title=html.escape(html.unescape(titles[name])), style=STYLE, body=body, version=version,
                           navigation=navigation_for(name, titles))
        (output / (name[:-3] + ".html")).write_text(page, encoding="utf-8")
    shutil.copyfile(source / STYLE, output / STYLE)
    for picture in sorted((source / IMAGES).glob("*.png")):
        shutil.copyfile(picture, output / IMAGES / picture.name)


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    make(sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3]), sys.argv[4])
