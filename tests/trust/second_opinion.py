#!/usr/bin/env python3
"""A second, independent implementation of what the program does to a mapping, and random sequences of operations on
which the two must agree: labels, read-outs, selection, list, mapping, chart, alerts, files and drafts on disk.

    second_opinion.py DRIVER [--sequences N] [--seed N]

Every sequence has a seed of its own, which is printed with a disagreement together with the operations that led there.
"""

import argparse
import hashlib
import json
import os
import plistlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unicodedata

FILE = "CSParameterOrder.plist"
ORDER = "ControlSurfaceParameterOrder"
CATALOGUE = "KorvelCSUnique"
MODE = "KorvelCSMode"
SIDES = {"Previous": "previous backup", "Original": "original backup", "Downloaded": "downloaded mapping",
         "Saved": "saved file"}
BESIDE = {"Previous": ".prev", "Original": ".original", "Downloaded": ".downloaded"}


def split(element):
    """An element of the file as number and name; one without a blank is an empty slot."""
    number, blank, name = element.partition(" ")
    return (number, name) if blank else ("0", "-")


def joined(entry):
    return "-1" if entry[1] == "-" else entry[0] + " " + entry[1]


def empty(page, control):
    return ["0", "-", page, control]


def text_of(entries):
    return "".join(f"{e[0]}\t{e[1]}\t{e[2]}\t{e[3]}\n" for e in entries)


def checksum(text):
    return hashlib.md5(text.encode()).hexdigest()


def mode_in(content):
    """The mode that a file records, or else suggests."""
    recorded = content.get(MODE) or [None]
    text = str(int(recorded[0]) if isinstance(recorded[0], bool) else recorded[0])
    if text in ("0", "1"):
        return int(text)
    return int(any("olume" in element for element in content.get(CATALOGUE, [])))


def mapping_of(order):
    """The slots of an order, as many as fill its pages."""
    entries = [[*split(element), position // 8 + 1, position] for position, element in enumerate(order)]
    pages = max(1, -(-len(entries) // 8))
    while len(entries) < pages * 8:
        entries.append(empty(pages, len(entries)))
    return entries


def differing(one, other):
    return sum(a != b for a, b in zip(one, other)) + abs(len(one) - len(other))


def folded(text):
    """What a search compares: neither case nor accents count."""
    return "".join(c for c in unicodedata.normalize("NFKD", text).casefold() if unicodedata.category(c)[0] != "M")


def begins_word(name, text):
    """Whether a word of the name, parted from the one before by a blank or a sign, begins with the text."""
    return any(name.startswith(text, at) and name[at - 1].isascii() and not name[at - 1].isalnum()
               for at in range(1, len(name)))


def pots_meant(word):
    """Where in the mapping the pots lie that a word means: "1·3" or "1.3", or the page "p1"."""
    if page := re.fullmatch(r"p0*([1-9][0-9]{0,6})", word):
        return (int(page[1]) - 1) * 8, int(page[1]) * 8
    if pot := re.fullmatch(r"0*([1-9][0-9]{0,6})[.·]0*([1-8])", word):
        at = (int(pot[1]) - 1) * 8 + int(pot[2]) - 1
        return at, at + 1
    return None


def exactly(value):
    """The value so that what equals it is the same: of the same types, dictionaries in the same order."""
    if isinstance(value, dict):
        return "dict", [(key, exactly(each)) for key, each in value.items()]
    if isinstance(value, list):
        return "list", [exactly(each) for each in value]
    return type(value).__name__, repr(value)


def counted(number, one, several):
    return f"1 {one}" if number == 1 else f"{number} {several}"


class Disagreement(Exception):
    pass


class Folder:
    """What the model expects in a plug-in's folder. A name holds the bytes it must hold, or the dictionary that the
    bytes must read as; the bytes are then taken from the disk, so that later copies can be checked to the byte."""

    def __init__(self, path):
        self.path = path
        self.files = {name: open(os.path.join(path, name), "rb").read() for name in os.listdir(path)}
        self.stamps = self.look()

    def look(self):
        stamps = {}
        for entry in os.scandir(self.path):
            status = entry.stat()
            stamps[entry.name] = (status.st_mtime_ns, status.st_ino, status.st_size)
        return stamps

    def dictionary(self, name):
        try:
            content = plistlib.loads(self.files[name])
        except Exception:  # whatever the reader says of bytes that are no property list
            return None
        return content if isinstance(content, dict) else None

    def set_aside(self):
        """What is no dictionary goes to another name, in place of an earlier one."""
        if FILE in self.files:
            self.files[FILE + ".unreadable"] = self.files.pop(FILE)

    def compare(self):
        stamps = self.look()
        if stamps.keys() != self.files.keys():
            raise Disagreement(f"files {sorted(stamps)} instead of {sorted(self.files)}")
        for name, expected in self.files.items():
            if stamps[name] == self.stamps.get(name) and isinstance(expected, bytes):
                continue
            with open(os.path.join(self.path, name), "rb") as file:
                found = file.read()
            if isinstance(expected, bytes):
                if found != expected:
                    raise Disagreement(f"{name} holds other bytes")
            else:
                try:
                    read = plistlib.loads(found)
                except Exception as failure:  # whatever the reader says of bytes that are no property list
                    raise Disagreement(f"{name} cannot be read: {failure}") from failure
                if exactly(read) != exactly(expected):
                    raise Disagreement(f"{name} holds {read} instead of {expected}")
            self.files[name] = found
        self.stamps = stamps


class Drafts:
    """What the model expects among the drafts on disk: the one being edited, and those that were left."""

    def __init__(self):
        self.path = ""
        self.left, self.current = [], None
        self.runs = self.begun = 0
        self.seen = None

    def write(self, content):
        if self.current is None:
            self.begun += 1
            self.current = {"age": (self.runs, str(self.begun))}
        self.current.update(content)

    def leave(self):
        if self.current is not None:
            self.left.append(self.current)
        self.current = None

    def end(self):
        self.leave()
        self.runs, self.begun = self.runs + 1, 0

    def left_of(self, plugin):
        """The newest first."""
        of_plugin = [draft for draft in self.left if draft["Plugin"] == plugin.encode()]
        return sorted(of_plugin, key=lambda draft: (draft["MadeAt"], draft["age"]), reverse=True)

    def compare(self):
        entries = list(os.scandir(self.path)) if os.path.isdir(self.path) else []
        stamps = {entry.path: (entry.stat().st_mtime_ns, entry.stat().st_ino) for entry in entries}
        expected = [{key: value for key, value in draft.items() if key != "age"}
                    for draft in self.left + ([self.current] if self.current else [])]
        if (stamps, expected) == self.seen:
            return
        self.seen = stamps, expected
        found = []
        for path in stamps:
            with open(path, "rb") as file:
                found.append(plistlib.loads(file.read()))
        if sorted(repr(sorted(draft.items())) for draft in found) != sorted(repr(sorted(draft.items()))
                                                                            for draft in expected):
            raise Disagreement(f"drafts {found} instead of {expected}")


class Model:
    """The program as the rules have it."""

    def __init__(self, root, plugins):
        self.root = root
        self.plugins = plugins  # name -> (type, folder)
        self.folders = {name: Folder(folder) for name, (_, folder) in plugins.items()}
        self.drafts = Drafts()
        self.begin(0, "", False)

    def begin(self, now, drafts, has_windows):
        self.now, self.drafts.path, self.has_windows = now, drafts, has_windows
        self.copied, self.clipboard = None, ""
        self.start()

    def start(self):
        """A run of the program begins."""
        self.row = None
        self.plugin_search = ""
        self.list_plugins()
        self.path = ""
        self.edited = None  # name of the plug-in whose file is at the path
        self.mapping = []
        self.list = []
        self.offered = []  # the list, or while a scan, which is no edit, has emptied it, the one before
        self.search, self.only_unmapped = "", False
        self.searched = ""  # when the list was last arranged
        self.standing, self.on_pots = [], set()
        self.shown = []  # positions in the list, a row each
        self.selected, self.selected_rows = -1, []
        self.choose_pots("")
        self.pasted = [0, 0, []]
        self.side = self.unreadable = ""
        self.other, self.other_mode, self.compared_path = [], 0, ""
        self.total, self.current, self.mode, self.cell = 1, 1, 0, 0
        self.pots = ["-" if self.has_windows else ""] * 8
        self.tips = [""] * 8
        self.page = self.pages = self.subtitle = ""
        self.title, self.help = "Please Select a plugin", "Please Select a Plugin"
        self.chart = ""
        self.undos, self.redos = [], []
        self.saved_entries, self.saved_mode = [], 0
        self.revision = self.dated = self.edited_at = 0
        self.kept = self.draft_left = self.draft_step = None
        self.look_at_drafts()
        self.alerts, self.opened = [], []

    # What is seen

    def order(self):
        return [joined(e) for e in self.mapping]

    @property
    def saved(self):
        return [joined(e) for e in self.saved_entries]

    def changed(self):
        return differing(self.order(), self.saved)

    def is_unsaved(self):
        return self.changed() > 0 or self.mode != self.saved_mode

    def state(self):
        left = self.draft_left
        return {
            "pots": self.pots, "tips": self.tips, "page": self.page, "pages": self.pages, "title": self.title,
            "subtitle": self.subtitle, "help": self.help, "path": self.path, "cell": self.cell, "mode": self.mode,
            "current": self.current, "total": self.total, "mapping": checksum(text_of(self.mapping)),
            "list": checksum(text_of(self.list)), "rows": len(self.shown), "selected": self.selected,
            "shown": checksum(text_of([self.list[at] for at in self.shown])), "search": self.search,
            "selectedRows": self.selected_rows, "chart": checksum(self.chart), "canUndo": bool(self.undos),
            "canRedo": bool(self.redos), "undoName": self.undos[-1][3] if self.undos else "",
            "choice": [-1 if self.focus is None else self.focus, self.chosen, self.is_page_meant, self.is_text_meant],
            "where": self.where(), "pasted": self.pasted, "clipboard": self.clipboard,
            "comparison": self.comparison(), "enabled": sorted(self.enabled()) if self.has_windows else [],
            "hints": self.hints() if self.has_windows else ["", "", ""], "pluginRows": sorted(self.plugin_rows),
            "changedPots": self.changed(), "unsaved": self.is_unsaved(), "drafted": sorted(self.drafted & self.listed),
            "draft": left and [self.pots_in(left), checksum("".join(each + "\n" for each in left["Order"])),
                               left["TotalPages"], left["Page"], left["Mode"], left["MadeAt"]],
            "alerts": self.alerts, "opened": self.opened,
        }

    def hints(self):
        number, of, missing = self.pasted
        placed = f"{number} of {of} placed; not offered here: {', '.join(missing)}" if missing else ""
        words = folded(self.plugin_search).split()
        found = sum(self.finds_plugin(words, name) for name in self.listed)
        plugins = f"{found} of {len(self.listed)}" if words and self.listed else ""
        return [placed, self.difference_hint(), plugins]

    def difference_hint(self):
        if self.unreadable:
            return f"Nothing is compared: the {SIDES[self.unreadable]} cannot be read"
        if not self.side:
            return ""
        positions, more, mode = self.comparison()[1:4]
        pots = "No pot differs" if not positions else counted(len(positions), "pot differs", "pots differ")
        if (positions, more, mode) == ([], 0, None):
            pots = "Nothing differs"
        pages = f", which has {counted(abs(more), 'page', 'pages')} {'more' if more > 0 else 'fewer'}" if more else ""
        modes = {None: "", 0: "; its mode is Insert/Effect", 1: "; its mode is Instrument"}
        return f"{pots} from the {SIDES[self.side]}{pages}{modes[mode]}"

    def enabled(self):
        """What the menus let somebody do."""
        loaded, edited = self.is_loaded(), self.is_edited()
        has_pot = loaded and self.focus is not None
        has_slots = has_pot or (loaded and self.is_page_meant)
        differ = [at for at in self.comparison()[1] if at < self.total * 8]
        can = {
            "clearPot": has_pot, "insertPot": has_pot, "removePot": has_pot,
            "findInList": has_pot and self.mapping[self.place_of(self.focus)][1] != "-",
            "cutSlots": has_slots, "copySlots": has_slots,
            "pasteSlots": loaded and self.copied is not None and not self.is_text_meant,
            "clearPage": loaded, "insertPage": loaded, "duplicatePage": loaded,
            "mapUnmapped": loaded and any(e[1] != "-" and joined(e) not in self.on_pots for e in self.list),
            "tidyUp": loaded, "startFromScratch": loaded, "goToPage": loaded,
            "fillFromPot": edited and any(self.list[self.shown[row]][1] != "-" for row in self.selected_rows),
            "showOnPanel": loaded and bool(self.where()), "nextDifference": edited and differ,
            "previousDifference": edited and differ,
            "takePot": has_pot and self.place_of(self.focus) in differ,
            "takePage": any(at // 8 + 1 == self.current for at in differ),
            "compareWithNothing": loaded, "undo": self.undos, "redo": self.redos,
            "compareWithSaved": loaded and FILE in self.folders[self.edited].files,
        }
        for side, suffix in BESIDE.items():
            can["compareWith" + side] = loaded and FILE + suffix in self.folders[self.edited].files
        return {name for name, is_possible in can.items() if is_possible}

    def alert(self, text, informative):
        self.alerts.append([text, informative])

    def refresh(self, page):
        self.is_refreshed = True
        name = self.row or ""
        location = os.path.join(self.plugins[name][1], FILE) if self.row else ""
        self.current = page
        first = (page - 1) * 8
        self.pots = [entry[1] for entry in self.mapping[first:first + 8]]
        self.tips = list(self.pots)
        self.page = f"Page {page} of {self.total}"
        self.pages = f"{self.total} Page" if self.total < 2 else f"{self.total} Pages"
        parts = ["<html><body><h1>MCU Mapping for '" + name + "'</h1><p>File Location: " + location
                 + "</p><style>table {width:100%; border: solid 1px;text-align:left;background-color:grey;} "
                 "table th{font-size:85%;background-color:lime;} table td{font-size:85%;text-align:center;height:50px;"
                 "width:10%;background-color:white;} </style><table><tr><th>Section</th>"]
        parts += [f"<th style='text-align:center;'>Pot {pot}</th>" for pot in range(1, 9)]
        parts.append("</tr>")
        for q in range(1, self.total + 1):
            parts.append(f"<tr><th>Page {q} Encoders</th>")
            parts += ["<td>" + entry[1] + "</td>" for entry in self.mapping[(q - 1) * 8:q * 8]]
            parts.append("</tr>")
        self.chart = "".join(parts) + "</table></body></html>"

    # The list

    def offer(self, content):
        self.list, self.selected, self.selected_rows = content, -1, []
        self.arrange()

    def arrange(self):
        current = self.shown[self.selected] if self.selected >= 0 else None
        chosen = {self.shown[row] for row in self.selected_rows}
        words = folded(self.search).split()
        is_same_search, self.searched = self.search == self.searched, self.search
        self.shown = [at for at, entry in enumerate(self.list)
                      if at == 0 or (at in chosen and is_same_search) or all(self.finds(w, entry) for w in words)]
        if self.only_unmapped:
            self.shown = [at for at in self.shown if at in chosen or joined(self.list[at]) not in self.on_pots]
        self.selected_rows = [row for row, at in enumerate(self.shown) if at in chosen]
        self.selected = (self.shown.index(current) if current in self.shown
                         else self.selected_rows[0] if self.selected_rows else -1)

    def finds(self, word, entry):
        return word in folded(entry[0]) or word in folded(entry[1]) or joined(entry) in self.elements_on(word)

    def elements_on(self, word):
        pots = pots_meant(word)
        return self.standing[pots[0]:pots[1]] if pots else ()

    def choose_row(self, row):
        self.selected = int(row) if 0 <= int(row) < len(self.shown) else -1
        self.selected_rows = [self.selected] if self.selected >= 0 else []

    def choose_rows(self, rows):
        current, *rows = (int(row) for row in rows.split())
        if current not in rows:
            below = [row for row in rows if row > current]
            current = self.selected if self.selected in rows else (below + rows[-1:] + [-1])[0]
        self.selected, self.selected_rows = current, rows

    def select_next(self):
        if 0 <= self.selected < len(self.shown) - 1:
            self.choose_row(self.selected + 1)

    def selection(self):
        return self.list[self.shown[self.selected]] if self.selected >= 0 else None

    def look_for(self, text):
        if text == self.search:
            return
        self.search = text
        self.arrange()
        if text and (self.selected < 0 or self.selection()[1] == "-"):
            if len(self.selected_rows) > 1:
                self.selected = self.selected_rows[1]
            else:
                self.choose_row(1)

    def where(self):
        selected = self.selection()
        if selected is None or selected[1] == "-":
            return []
        return [at for at, element in enumerate(self.standing) if element == joined(selected)]

    def show_on_panel(self, _):
        pages = sorted({at // 8 + 1 for at in self.where()})
        if pages:
            later = [page for page in pages if page > self.current and self.current in pages]
            self.show((later or pages)[0])

    def find_in_list(self, _):
        sought = self.mapping[self.place_of(self.focus)][:2]
        rows = [at for at, entry in enumerate(self.list) if entry[:2] == sought]
        if sought[1] == "-" or not rows:
            return

        def select():
            self.choose_row(next((row for row, at in enumerate(self.shown) if at in rows), -1))
            return self.selected >= 0
        if not select():
            self.show_only_unmapped("0")
            if not select():
                self.look_for("")
                select()

    def go_to_page(self, text):
        text = text.strip()
        if re.fullmatch("[0-9]+", text) and 1 <= int(text) <= self.total:
            self.show(int(text))
        elif text:
            names = [(at // 8 + 1, folded(entry[1])) for at, entry in enumerate(self.mapping[:self.total * 8])
                     if entry[1] != "-"]
            pages = ([page for page, name in names if name.startswith(folded(text))]
                     or [page for page, name in names if begins_word(name, folded(text))])
            if pages:
                self.show(pages[0])

    def finds_plugin(self, words, name):
        return all(word in folded(name) or word in folded(self.plugins[name][0]) for word in words)

    def look_for_plugin(self, text):
        if text != self.plugin_search:
            self.plugin_search = text
            self.find_plugins()

    def find_plugins(self):
        words = folded(self.plugin_search).split()
        self.plugin_rows = {name for name in self.listed if name == self.row or self.finds_plugin(words, name)}

    def show_only_unmapped(self, only):
        if self.only_unmapped != (only == "1"):
            self.only_unmapped = only == "1"
            self.arrange()

    # Drafts

    def keep(self, _=None):
        if not self.is_loaded():
            return
        if not self.is_unsaved():
            self.drafts.current = self.kept = None
            return
        if self.dated != self.revision:
            self.dated, self.edited_at = self.revision, self.now
        if self.kept == (self.revision, self.current):
            return
        self.kept = (self.revision, self.current)
        self.drafts.write({"Plugin": self.path.encode(), "Order": self.order(), "TotalPages": self.total,
                           "Page": self.current, "Mode": self.mode, "MadeAt": self.edited_at})

    def leave_edits(self):
        self.keep()
        self.drafts.leave()
        self.kept, self.draft_step = None, "leaves"

    def pots_in(self, draft):
        return differing(self.saved, [joined(e) for e in mapping_of(draft["Order"])])

    def look_at_drafts(self):
        plugins = {draft["Plugin"].decode() for draft in self.drafts.left}
        self.drafted = {name for name in self.plugins if os.path.join(self.plugins[name][1], FILE) in plugins}

    def look_for_draft(self):
        self.draft_left = None
        for draft in self.drafts.left_of(self.path):
            if draft["Mode"] != self.saved_mode or self.pots_in(draft) > 0:
                self.draft_left = draft
                break
            self.drafts.left.remove(draft)
        self.look_at_drafts()

    def settle(self):
        """What is edited now is the draft being edited, and was not left."""
        same = [draft for draft in self.drafts.left_of(self.path)
                if (draft["Mode"], draft["TotalPages"], draft["Order"]) == (self.mode, self.total, self.order())]
        if same:
            self.dated, self.edited_at = self.revision, same[0]["MadeAt"]
        self.keep()
        for draft in same:
            self.drafts.left.remove(draft)
        self.look_for_draft()

    def bring_back(self, _):
        draft = self.draft_left
        if draft is None:
            return

        def replace():
            self.leave_edits()
            self.draft_step = "brings"
            self.mapping = mapping_of(draft["Order"])
            self.total = draft["TotalPages"]
            self.mode = self.cell = draft["Mode"]
            self.refresh(draft["Page"])
            self.show_mode(self.edited)
        self.edit(replace, "Bring Back Draft")
        self.settle()

    def discard(self, _):
        if self.draft_left is not None:
            self.drafts.left.remove(self.draft_left)
            self.look_for_draft()

    def quit(self, _):
        self.keep()
        self.crash(_)

    def crash(self, _):
        self.drafts.end()
        self.start()

    # The history

    def snapshot(self):
        self.offered = self.list or self.offered
        return ([list(e) for e in self.mapping], [list(e) for e in self.offered], self.total, self.current, self.mode)

    def edit(self, action, name):
        before, path = self.snapshot(), self.path
        self.is_refreshed = True
        action()
        after = self.snapshot()
        draft_step, self.draft_step = self.draft_step, None
        self.pasted = [0, 0, []]
        if self.path != path:
            self.undos, self.redos = [], []
            self.revision += 1
        elif (before[:3], before[4]) != (after[:3], after[4]):
            self.undos.append((before, after, draft_step, name))
            self.redos = []
            self.revision += 1

    def go_to(self, there, back, leaves):
        if leaves:
            self.leave_edits()
            self.draft_step = None
        self.revision += 1
        self.pasted = [0, 0, []]
        self.mapping = [list(e) for e in there[0]]
        if there[1] != back[1]:
            self.offered = [list(e) for e in there[1]]
            if self.is_edited():
                self.search = ""
                self.offer(self.offered)
                self.choose_row(0)
        self.total, self.mode = there[2], there[4]
        self.refresh(there[3])
        if there[4] != back[4]:
            self.cell = self.mode
            self.show_mode(self.edited)

    def undo(self, _):
        if self.undos:
            step = self.undos.pop()
            self.go_to(step[0], step[1], step[2] == "brings")
            if step[2]:
                self.settle()
            self.redos.append(step)

    def redo(self, _):
        if self.redos:
            step = self.redos.pop()
            self.go_to(step[1], step[0], step[2] is not None)
            if step[2]:
                self.settle()
            self.undos.append(step)

    # Plug-ins

    def is_loaded(self):
        return bool(self.mapping) and bool(self.path)

    def is_edited(self):
        return self.is_loaded() and self.row is not None

    def list_plugins(self):
        self.listed = {name for name in self.plugins if FILE in self.folders[name].files}
        self.find_plugins()

    def scan(self, _):
        self.keep()
        self.is_refreshed = True
        self.pasted = [0, 0, []]
        self.row = None
        self.offered = self.list or self.offered
        self.list_plugins()
        self.look_at_drafts()
        self.offer([])
        self.search = ""
        self.title, self.help = "Please Select a plugin", "Please Select a Plugin"

    def plugin(self, name):
        if name not in self.plugin_rows:
            return
        self.row = name
        self.edit(self.choose, "Reload Mapping")

    def choose(self):
        self.leave_edits()
        kind, folder = self.plugins[self.row]
        self.current = 1
        self.title = f"{self.row} ({kind})"
        self.path = os.path.join(folder, FILE)
        self.edited = self.row
        self.mark()
        self.load(FILE, True)
        self.note_saved()
        self.saved_mode = self.mode
        self.follow_compared()
        self.refresh(1)
        self.choose_row(0)
        self.look_for_draft()

    def mark(self):
        folder = self.folders[self.edited]
        content = folder.dictionary(FILE)
        if content is not None and isinstance(content.get(CATALOGUE), list) and content[CATALOGUE]:
            return
        if content is None:
            folder.set_aside()
            return
        catalogue = ["-1"]
        for element in content.get(ORDER, []):
            if element != "-1" and element not in catalogue:
                catalogue.append(element)
        content[CATALOGUE] = catalogue
        folder.files[FILE] = content

    def load(self, name, takes_mode):
        folder = self.folders[self.edited]
        if not isinstance(folder.files.get(name, b""), bytes):
            content = folder.files[name]  # written a moment ago
        else:
            content = folder.dictionary(name)
        content = content or {}
        self.search = ""
        self.offer([empty(0, 0)] + [[*split(element), 0, 0] for element in content.get(CATALOGUE, [])
                                    if split(element) != ("0", "-")])
        self.choose_row(0)
        if takes_mode:
            self.mode = mode_in(content)
        self.mapping = mapping_of(content.get(ORDER, []))
        self.total = len(self.mapping) // 8
        if takes_mode:
            self.set_mode(self.mode, False)

    def show_mode(self, name):
        if self.mode:
            self.subtitle = "Logic Pro Instrument Mapper"
            self.help = f"Editing {name} using Instrument Mode"
        else:
            self.subtitle = "Logic Pro Insert/Effect Mapper"
            self.help = f"Editing {name} in Insert/Effect Mode"

    def set_mode(self, mode, reads):
        self.mode = self.cell = mode
        if reads:
            self.load(FILE, False)
            self.note_saved()
            self.follow_compared()
        self.refresh(1)
        self.choose_row(0)
        self.show_mode(self.row or "")

    def change_mode(self, mode):
        def change():
            if self.changed() > 0:
                self.leave_edits()
            self.set_mode(int(mode), True)
            self.look_for_draft()
        self.cell = int(mode)
        if self.is_edited():
            self.edit(change, "Change Mode")

    # Files

    def note_saved(self):
        self.saved_entries = [entry[:2] for entry in self.mapping]

    def save(self, _):
        if not self.is_loaded():
            return
        self.keep()
        files = self.folders[self.edited].files
        content = self.folders[self.edited].dictionary(FILE)
        old = files.get(FILE)
        if old is not None and FILE + ".original" not in files:
            files[FILE + ".original"] = old
        if old is not None:
            files[FILE + ".prev"] = old
        if content is None:
            self.folders[self.edited].set_aside()
        else:
            content[ORDER] = self.order()
            content[MODE] = [str(self.mode)]
            files[FILE] = content
            self.note_saved()
            self.saved_mode = self.mode
            self.is_refreshed = True
            self.drafts.current = None
            for draft in self.drafts.left_of(self.path):
                self.drafts.left.remove(draft)
            self.look_for_draft()
        self.follow_compared()
        self.alert("New Mapping has been saved",
                   "Please remember to close and re-open plugin within Logic so that changes are updated\n\n\n"
                   "Backup of previous plist file has been saved here:\n\n" + self.path + ".prev")

    def recall(self, suffix):
        if not self.is_edited():
            return
        self.keep()
        files = self.folders[self.edited].files
        if FILE + suffix not in files:
            self.alert("Recall file does not exist",
                       "Please Note: Original, and Previous backup files will only exist once a mapping has been saved,"
                       " simply reselect plugin on left menu to reload the default file again.")
            return
        files[FILE] = files[FILE + suffix]
        self.edit(self.choose, "Recall Original" if suffix == ".original" else "Recall Previous")
        self.alert("Recalled mapping has been applied", "Now saved as this plugins default")

    def write_chart(self, _):
        if not self.is_edited():
            return
        files = self.folders[self.edited].files
        files.pop(FILE + ".html", None)
        if self.chart.isascii():
            files[FILE + ".html"] = self.chart.encode("ascii")
        self.opened.append(self.path + ".html")

    def downloaded(self, _):
        def load():
            self.leave_edits()
            self.load(FILE + ".downloaded", True)
            self.refresh(1)
            self.choose_row(0)
            self.look_for_draft()
            self.follow_compared()
        self.edit(load, "Load Shared Mapping")
        self.alert("OK Done", "Loaded cloud file into interface memory, please remember to save if you wish to make this"
                   " your new default mapping")

    # Pages

    def show(self, page):
        if self.is_loaded() and 1 <= page <= self.total:
            self.refresh(page)

    def new(self):
        self.total += 1
        count = len(self.mapping)
        self.mapping += [empty(self.total, count + i) for i in range(8)]
        self.refresh(self.total)

    def delete(self, _):
        if not self.is_loaded():
            return
        if self.current < 2:
            self.alert("Cannot delete first page", "Sorry!")
            return

        def remove():
            first = (self.current - 1) * 8
            del self.mapping[first:first + 8]
            self.total -= 1
            self.refresh(self.current - 1)
        self.edit(remove, "Delete Page")

    def clear(self):
        for entry in self.mapping[:8]:
            entry[:2] = ["0", "-"]
        self.total = 1
        self.refresh(1)

    def move(self, to):
        if not self.is_loaded():
            return
        if not 1 <= to <= self.total:
            self.alert("Sorry not possible", f"Page {to} does not exist, cannot move page!")
            return
        if to == self.current:
            return

        def exchange():
            one, self.current = (self.current - 1) * 8, to
            for k in range(8):
                source = self.mapping[one + k][1]
                self.swap(one + k, (to - 1) * 8 + k)
                if source != "-":
                    self.select_next()
            self.refresh(to)
        self.edit(exchange, "Exchange Pages")

    # Slots

    def swap(self, one, other):
        a, b = self.mapping[one], self.mapping[other]
        a[:2], b[:2] = b[:2], a[:2]

    def pot(self, pot):
        if not self.is_loaded() or self.selected < 0:
            return
        source = self.selection()

        def assign():
            self.mapping[self.place_of(pot)][:2] = source[:2]
            self.refresh(self.current)
            if source[1] != "-":
                self.select_next()
        self.edit(assign, "Clear Pot" if source[1] == "-" else "Assign Parameter")

    # Further edits

    def choose_pots(self, pots):
        self.is_page_meant, self.is_text_meant = pots == "page", pots == "text"
        numbers = [int(pot) for pot in pots.split() if pot.isdigit()]
        self.focus, self.chosen = numbers[0] if numbers else None, numbers[1:]

    def place_of(self, pot):
        return (self.current - 1) * 8 + int(pot)

    def meant(self):
        """Places of what has the focus."""
        return [self.place_of(pot) for pot in (range(8) if self.is_page_meant else self.chosen)]

    def contents(self):
        return [entry[:2] for entry in self.mapping[:self.total * 8]]

    def change(self, name, action):
        """An edit of a loaded mapping, which then shows the page that the action answers, or the same."""
        if self.is_loaded():
            self.edit(lambda: self.refresh(action() or self.current), name)

    def insert_pages(self, before, count):
        first = (before - 1) * 8
        self.mapping[first:first] = [empty(before + slot // 8, first + slot) for slot in range(count * 8)]
        self.total += count

    def lay(self, position, contents):
        """Appends as many pages as the last parameter needs."""
        full = [position + at for at, content in enumerate(contents) if content[1] != "-"]
        if full and full[-1] >= self.total * 8:
            self.insert_pages(self.total + 1, full[-1] // 8 + 1 - self.total)
        for entry, content in zip(self.mapping[position:self.total * 8], contents):
            entry[:2] = content

    def empty_slots(self, places):
        for place in places:
            self.mapping[place][:2] = ["0", "-"]

    def clear_pots(self, _):
        self.change("Clear Pots" if len(self.chosen) > 1 else "Clear Pot", lambda: self.empty_slots(self.meant()))

    def clear_page(self, _):
        self.change("Clear Page", lambda: self.empty_slots(range(self.place_of(0), self.place_of(8))))

    def copy(self, _):
        if not self.is_loaded() or not self.meant():
            return
        contents = [self.mapping[place][:2] for place in self.meant()]
        # An empty slot is copied as such, whatever its number.
        self.copied = self.path, self.is_page_meant, [["0", "-"] if c[1] == "-" else c for c in contents]
        self.clipboard = "\n".join(f"Page {place // 8 + 1}, Pot {place % 8 + 1}: "
                                   + (content[1] if content[1] == "-" else joined(content))
                                   for place, content in zip(self.meant(), contents))

    def cut(self, _):
        def take_out():
            if not self.is_page_meant:
                self.empty_slots(self.meant())
            elif self.total == 1:
                self.empty_slots(range(8))
            else:
                del self.mapping[self.place_of(0):self.place_of(8)]
                self.total -= 1
                return min(self.current, self.total)
        if self.meant():
            self.copy(_)
            self.change("Cut", take_out)

    def offered_here(self, content):
        if content[1] == "-":
            return content
        offered = [entry[:2] for entry in self.list or self.offered]
        def is_alike(entry):
            return entry[1] != "-" and folded(entry[1]) == folded(content[1])

        for is_meant in (lambda entry: entry == content, lambda entry: entry[1] == content[1],
                         lambda entry: is_alike(entry) and entry[0] == content[0], is_alike):
            for entry in filter(is_meant, offered):
                return entry
        return None

    def paste(self, _):
        if not self.is_loaded() or self.copied is None:
            return
        source, are_pages, contents = self.copied
        found = contents if source == self.path else [self.offered_here(content) for content in contents]

        def put():
            first = self.place_of(0 if are_pages or self.focus is None else self.focus)
            if are_pages:
                first += 8
                self.insert_pages(self.current + 1, len(contents) // 8)
            there = self.contents()[first:] + [["0", "-"]] * len(found)
            self.lay(first, [there[at] if content is None else content for at, content in enumerate(found)])
            return first // 8 + 1
        self.change("Paste", put)
        wanted = [(c[1], f) for c, f in zip(contents, found) if c[1] != "-"]
        missing = [name for name, place in wanted if place is None]
        self.pasted = [len(wanted) - len(missing), len(wanted), list(dict.fromkeys(missing))]

    def insert_pot(self, _):
        def insert():
            contents, first = self.contents(), self.place_of(self.focus)
            gap = next((at for at in range(first, len(contents)) if contents[at][1] == "-"), len(contents))
            if gap > first:
                self.lay(first, [["0", "-"]] + contents[first:gap])
        if self.focus is not None:
            self.change("Insert Pot", insert)

    def remove_pot(self, _):
        def remove():
            first = self.place_of(self.focus)
            following = self.contents()[first + 1:]
            end = next((at for at, content in enumerate(following) if content[1] != "-"), len(following))
            end = next((at for at in range(end, len(following)) if following[at][1] == "-"), len(following))
            self.lay(first, following[:end] + [["0", "-"]])
        if self.focus is not None:
            self.change("Remove Pot", remove)

    def insert_page(self, _):
        self.change("Insert Page", lambda: self.insert_pages(self.current, 1))

    def duplicate_page(self, _):
        def duplicate():
            page = self.contents()[self.place_of(0):self.place_of(8)]
            self.insert_pages(self.current + 1, 1)
            self.lay(self.place_of(8), page)
            return self.current + 1
        self.change("Duplicate Page", duplicate)

    def map_unmapped(self, _):
        def map_all():
            contents = [joined(content) for content in self.contents()]
            offered = {joined(entry): entry[:2] for entry in self.list or self.offered if entry[1] != "-"}
            wanted = [content for element, content in offered.items() if element not in contents]
            end = max([at + 1 for at, element in enumerate(contents) if element != "-1"], default=0)
            self.lay(end, wanted)
            return end // 8 + 1 if wanted else self.current
        self.change("Map Unmapped", map_all)

    def tidy_up(self, _):
        def tidy():
            contents, here = self.contents(), range(self.place_of(0), self.place_of(8))
            full = [at for at, content in enumerate(contents) if content[1] != "-"]
            shown = [new for new, at in enumerate(full) if at in here]
            pages = max(1, -(-len(full) // 8))
            self.empty_slots(at for at in full if at >= len(full))
            for new, at in enumerate(full):
                self.mapping[new][:2] = contents[at]
            del self.mapping[pages * 8:self.total * 8]
            self.total = pages
            return shown[0] // 8 + 1 if shown else min(self.current, pages)
        self.change("Tidy Up", tidy)

    def start_from_scratch(self, _):
        def leave_one_page():
            self.empty_slots(range(8))
            del self.mapping[8:]
            self.total = 1
            return 1
        self.change("Start From Scratch", leave_one_page)

    # Filling and moving

    def fill(self, begin):
        selected = [self.list[self.shown[row]][:2] for row in self.selected_rows]
        contents = [content for content in selected if content[1] != "-"]

        def lay_them():
            place, page = begin()
            if place is not None:
                self.lay(place, contents)
            return page
        if contents:
            self.change("Assign Parameter" if len(contents) == 1 else "Fill Pots", lay_them)

    def first_empty(self, page, end):
        """The place of the first empty pot of some pages."""
        places = range((page - 1) * 8, end * 8) if 1 <= page <= self.total else ()
        return next((place for place in places if self.mapping[place][1] == "-"), None)

    def fill_from_pot(self, _):
        def begin():
            if self.focus is not None:
                return self.place_of(self.focus), self.current
            place = self.first_empty(self.current, self.total)
            place = self.total * 8 if place is None else place
            return place, place // 8 + 1
        self.fill(begin)

    def fill_pot(self, pot):
        self.fill(lambda: (self.place_of(pot), self.current))

    def fill_page(self, page):
        self.fill(lambda: (self.first_empty(int(page), int(page)), self.current))

    def has_slots(self, *places):
        return all(0 <= place < self.total * 8 for place in places)

    def exchange(self, places):
        one, other = (int(place) for place in places.split())
        self.change("Exchange Pots", lambda: self.has_slots(one, other) and self.swap(one, other))

    def pot_to_page(self, argument):
        place, page = (int(number) for number in argument.split())

        def move():
            to = self.first_empty(page, page)
            if to is not None and self.has_slots(place) and self.mapping[place][1] != "-":
                self.swap(place, to)
        self.change("Move Pot", move)

    def page_before(self, argument):
        page, before = (int(number) for number in argument.split())

        def move():
            if not (1 <= page <= self.total and 1 <= before <= self.total + 1):
                return self.current
            shown = self.mapping[self.place_of(0)]
            pages = [self.mapping[at:at + 8] for at in range(0, self.total * 8, 8)]
            moved, pages[page - 1] = pages[page - 1], []
            pages.insert(before - 1, moved)
            self.mapping[:self.total * 8] = sum(pages, [])
            return next(at for at, entry in enumerate(self.mapping) if entry is shown) // 8 + 1
        self.change("Move Page", move)

    # Comparing

    def compare_with(self, side):
        self.is_refreshed = True
        self.side = self.unreadable = ""
        self.other = []
        if not self.is_loaded() or not side:
            return
        if side == "Saved":
            self.other, self.other_mode = self.saved_entries, self.saved_mode
        else:
            folder = self.folders[self.edited]
            content = folder.dictionary(FILE + BESIDE[side]) if FILE + BESIDE[side] in folder.files else None
            if content is None:
                self.unreadable = side
                return
            self.other = [entry[:2] for entry in mapping_of(content.get(ORDER, []))]
            self.other_mode = mode_in(content)
        self.side = side

    def follow_compared(self):
        """The files may have changed; another plug-in begins without a comparison."""
        if self.compared_path != self.path:
            self.compare_with("")
        elif self.side or self.unreadable:
            self.compare_with(self.side or self.unreadable)
        self.compared_path = self.path

    def comparison(self):
        if not self.side:
            return ["", [], 0, None, self.unreadable]
        here, there = self.order(), [joined(content) for content in self.other]
        longer = max(len(here), len(there))
        here, there = here + ["-1"] * (longer - len(here)), there + ["-1"] * (longer - len(there))
        return [self.side, [at for at in range(longer) if here[at] != there[at]],
                -(-len(self.other) // 8) - len(self.mapping) // 8,
                self.other_mode if self.other_mode != self.mode else None, ""]

    def go_to_difference(self, step):
        pots = [at for at in self.comparison()[1] if at < self.total * 8]
        if not pots:
            return
        here = range(self.place_of(0), self.place_of(8)) if self.focus is None else [self.place_of(self.focus)]
        if step > 0:
            place = next((at for at in pots if at > here[-1] or (self.focus is None and at in here)), pots[0])
        else:
            place = next((at for at in reversed(pots) if at < here[0] or (self.focus is None and at in here)), pots[-1])
        if place // 8 + 1 != self.current:
            self.show(place // 8 + 1)
        self.choose_pots(spelled(place % 8, place % 8))

    def take(self, name, pots):
        def put():
            for place in (self.place_of(pot) for pot in pots):
                self.mapping[place][:2] = self.other[place] if place < len(self.other) else ["0", "-"]
        if self.side:
            self.change(name, put)

    def carry_out(self, operation, argument):
        self.alerts, self.opened = [], []
        self.is_refreshed = operation in ("undo", "redo")
        self.now += 1
        loaded = self.is_loaded()
        if self.has_windows and operation in ITEMS and operation not in self.enabled():
            return
        {
            "scan": self.scan, "plugin": self.plugin, "mode": self.change_mode, "save": self.save,
            "recall original": lambda _: self.recall(".original"), "recall previous": lambda _: self.recall(".prev"),
            "chart": self.write_chart, "downloaded": self.downloaded, "undo": self.undo, "redo": self.redo,
            "previous": lambda _: self.show(max(self.current - 1, 1)),
            "next": lambda _: self.show(min(self.current + 1, self.total)),
            "first": lambda _: self.show(1), "last": lambda _: self.show(self.total),
            "page": lambda page: self.show(int(page)),
            "new": lambda _: loaded and self.edit(self.new, "Add Page"), "delete": self.delete,
            "clear": lambda _: loaded and self.edit(self.clear, "Clear All Pages"),
            "move first": lambda _: self.move(1), "move last": lambda _: self.move(self.total),
            "move previous": lambda _: self.move(self.current - 1),
            "move next": lambda _: self.move(self.current + 1),
            "exchange": self.exchange, "pot": self.pot, "row": self.choose_row, "search": self.look_for,
            "only unmapped": self.show_only_unmapped, "keep": self.keep, "bring back": self.bring_back,
            "discard": self.discard, "quit": self.quit, "crash": self.crash,
            "rows": self.choose_rows, "choose": self.choose_pots, "search plugins": self.look_for_plugin,
            "clearPage": self.clear_page, "clearPot": self.clear_pots, "cutSlots": self.cut, "copySlots": self.copy,
            "pasteSlots": self.paste, "insertPot": self.insert_pot, "removePot": self.remove_pot,
            "insertPage": self.insert_page, "duplicatePage": self.duplicate_page, "mapUnmapped": self.map_unmapped,
            "tidyUp": self.tidy_up, "startFromScratch": self.start_from_scratch, "fillFromPot": self.fill_from_pot,
            "fill pot": self.fill_pot, "fill page": self.fill_page, "pot to page": self.pot_to_page,
            "page before": self.page_before, "showOnPanel": self.show_on_panel, "findInList": self.find_in_list,
            "goToPage": self.go_to_page, "compareWithNothing": lambda _: self.compare_with(""),
            **{"compareWith" + side: lambda _, side=side: self.compare_with(side) for side in SIDES},
            "nextDifference": lambda _: self.go_to_difference(1),
            "previousDifference": lambda _: self.go_to_difference(-1),
            "takePot": lambda _: self.focus is not None and self.take("Take Pot", [self.focus]),
            "takePage": lambda _: self.take("Take Page", range(8)),
        }[operation](argument)
        if self.is_refreshed:
            self.standing = [None if entry[1] == "-" else joined(entry) for entry in self.mapping[:self.total * 8]]
            self.on_pots = set(self.standing)
            if self.only_unmapped or any(pots_meant(word) for word in folded(self.search).split()):
                self.arrange()


# Random files and operations

WORDS = ["Cutoff", "Freq", "Volume", "Master volume", "cutoff", "GROSSE", "Osc 1 Level", "R&D <b>", "Größe", "音量",
         "a  b", "-", "", "Mix", "\U0001f39b", "Q", "'quoted'", "100%@", "x" * 60]


def random_element(dice):
    kind = dice.random()
    if kind < 0.2:
        return "-1"
    if kind < 0.25:
        return dice.choice(["5", "", "olume", "Volume", "-", "0"])
    if kind < 0.3:
        return dice.choice([" leading", "0 -", "7 -", "3 ", "  ", "-1 x", "12 0", "0 0"])
    knob = "Knob" if dice.random() < 0.8 else dice.choice(["KNOB", "Knöb"])
    word = dice.choice(WORDS) if dice.random() < 0.3 else f"{knob} {dice.randrange(60)}"
    return f"{dice.randrange(40)} {word}"


def random_dictionary(dice):
    content = {}
    if dice.random() < 0.3:
        content["Before"] = dice.choice([True, 3, -7, 1.5, "text", b"\0\1", [1, "a"], {"k": "v"}])
    if dice.random() < 0.95:
        count = dice.choice([0, 1, 7, 8, 9, 16, 17, 24, 25, 40, 70])
        content[ORDER] = [random_element(dice) for _ in range(count)]
    if dice.random() < 0.25:
        content[CATALOGUE] = [random_element(dice) for _ in range(dice.randrange(30))]
    if dice.random() < 0.4:
        content[MODE] = dice.choice([["1"], ["0"], ["2"], [], [1], [0], ["1", "0"], ["x"], [True]])
    if dice.random() < 0.3:
        content["After"] = {"nested": [{"deep": 1}, "-1"]}
    return content


def random_bytes(dice):
    if dice.random() < 0.06:
        return dice.choice([b"", b"garbage", b"<html>Not Found</html>", b"<plist><array/></plist>", b"bplist00xyz"])
    form = plistlib.FMT_XML if dice.random() < 0.6 else plistlib.FMT_BINARY
    return plistlib.dumps(random_dictionary(dice), fmt=form, sort_keys=False)


OPERATIONS = (["pot"] * 12 + ["row"] * 6 + ["new"] * 3 + ["delete"] * 2 + ["clear"]
              + ["previous", "next", "first", "last"] + ["page"] * 2
              + ["move first", "move last", "move previous", "move next"] * 2 + ["exchange"] * 3
              + ["mode"] + ["save"] * 2 + ["recall original", "recall previous"] + ["chart"] + ["downloaded"]
              + ["plugin"] * 2 + ["undo"] * 6 + ["redo"] * 4 + ["keep"] * 2 + ["bring back"] * 2 + ["discard"]
              + ["choose"] * 10 + ["rows"] * 5 + ["clearPot"] * 2 + ["clearPage", "startFromScratch", "tidyUp"]
              + ["cutSlots"] * 2 + ["copySlots"] * 3 + ["pasteSlots"] * 6 + ["insertPot"] * 2 + ["removePot"] * 2
              + ["insertPage", "duplicatePage", "mapUnmapped"] + ["fillFromPot"] * 2 + ["fill pot", "fill page"]
              + ["pot to page"] * 2 + ["page before"] * 2 + ["showOnPanel"] * 2
              + ["compareWithNothing", "compareWithSaved", "compareWithPrevious", "compareWithOriginal"]
              + ["compareWithDownloaded"] * 2 + ["nextDifference", "previousDifference", "takePot"] * 3 + ["takePage"])
IN_WINDOWS = ["search"] * 6 + ["only unmapped"] * 5 + ["search plugins"] * 3 + ["findInList"] * 4 + ["goToPage"] * 3
# What is done by an item of a menu, which is off while it cannot be done.
ITEMS = {operation for operation in OPERATIONS + IN_WINDOWS if operation != operation.lower()} | {"undo", "redo"}
SEARCHES = ["", "", "Knob", "knob 1", "1", "GROSSE", "o", "量", "<B>", " ", "nothing has this", "1 knob", "p1", "p2 o",
            "1·2", "2.1", "p1 p2"]
PLUGIN_SEARCHES = ["", "", "eq", "MAKER", "grosse", "x synth", "&", "nothing has this", " "]
PAGES_MEANT = ["1", " 2 ", "3", "04", "99", "0", "knob 1", "kn", "L", "gro", "b", "音", "<", "", "nothing has this"]


def some_of(dice, all_of_them):
    return sorted(dice.sample(all_of_them, dice.randrange(1, min(len(all_of_them), 6) + 1)))


def spelled(*numbers):
    return " ".join(str(number) for number in numbers)


def random_argument(dice, operation, model):
    slots = model.total * 8
    if operation == "plugin":
        return dice.choice(list(model.plugins))
    if operation == "row":
        return str(dice.randrange(-1, max(len(model.list), 1) + 1))
    if operation == "rows":
        rows = range(len(model.shown))
        return spelled(dice.randrange(-1, len(rows)), *some_of(dice, rows)) if rows else "-1"
    if operation == "choose":
        kind = dice.random()
        if kind < 0.3:
            return "page" if kind < 0.2 else "text" if kind < 0.22 else ""
        focus = dice.randrange(8)
        return spelled(focus, *(some_of(dice, range(8)) if kind > 0.6 else [focus]))
    if operation in ("pot", "fill pot"):
        return str(dice.randrange(8))
    if operation in ("page", "fill page"):
        return str(dice.randrange(0, model.total + 2))
    if operation == "exchange":
        return spelled(dice.randrange(-1, slots + 2), dice.randrange(slots))
    if operation == "pot to page":
        return spelled(dice.randrange(-1, slots + 2), dice.randrange(0, model.total + 2))
    if operation == "page before":
        return spelled(dice.randrange(0, model.total + 2), dice.randrange(0, model.total + 3))
    if operation in ("mode", "only unmapped"):
        return str(dice.randrange(2))
    texts = {"search": SEARCHES, "search plugins": PLUGIN_SEARCHES, "goToPage": PAGES_MEANT}
    return dice.choice(texts[operation]) if operation in texts else ""


class Sequence:
    """One random sequence: its files, its operations, and what the driver says of each."""

    def __init__(self, seed, driver, root):
        self.dice = random.Random(seed)
        self.driver = driver
        self.root = root
        self.done = []

    def make_files(self):
        dice = self.dice
        built_in = os.path.join(self.root, "Library/Application Support/Logic/Plug-In Settings")
        presets = os.path.join(self.root, "home/Library/Audio/Presets")
        plugins = {"EQ One": ("Logic Built-In", os.path.join(built_in, "EQ One"))}
        if dice.random() < 0.5:
            plugins["Größe & <Co>"] = ("Maker", os.path.join(presets, "Maker", "Größe & <Co>"))
        if dice.random() < 0.3:
            plugins["Synth X"] = ("Maker", os.path.join(presets, "Maker", "Synth X"))
        for _, folder in plugins.values():
            os.makedirs(folder)
            for suffix, chance in (("", 1.0), (".original", 0.1), (".prev", 0.1), (".downloaded", 0.6)):
                if dice.random() < chance:
                    with open(os.path.join(folder, FILE + suffix), "wb") as file:
                        file.write(random_bytes(dice))
        return plugins

    def ask(self, operation, argument):
        self.driver.stdin.write(f"{operation}\t{argument}\n")
        self.driver.stdin.flush()
        answer = self.driver.stdout.readline()
        if not answer:
            raise Disagreement("the driver ended")
        return json.loads(answer)

    def step(self, model, operation, argument):
        self.done.append(f"{operation} {argument}".strip())
        answer = self.ask(operation, argument)
        del answer["now"], answer["drafts"]
        for unordered in ("drafted", "enabled", "pluginRows"):
            answer[unordered].sort()
        model.carry_out(operation, argument)
        expected = model.state()
        if answer != expected:
            for key, value in expected.items():
                if answer.get(key) != value:
                    raise Disagreement(f"{key} is {answer.get(key)!r} instead of {value!r}")
            raise Disagreement(f"{answer.keys()} instead of {expected.keys()}")
        for folder in model.folders.values():
            folder.compare()
        model.drafts.compare()

    def run(self):
        model = Model(self.root, self.make_files())
        has_windows = self.dice.random() < 0.1
        operations = OPERATIONS + (IN_WINDOWS if has_windows else [])
        answer = self.ask("begin in windows" if has_windows else "begin", self.root)
        model.begin(answer["now"], answer["drafts"], has_windows)
        count = self.dice.randrange(30, 101)
        # Some begin before anything was selected; the others with a plug-in.
        if self.dice.random() < 0.9:
            self.step(model, "plugin", self.dice.choice(list(model.plugins)))
        planned = []
        for _ in range(count):
            rare = self.dice.random()
            operation = (planned.pop() if planned else "scan" if rare < 0.01 else "quit" if rare < 0.02
                         else "crash" if rare < 0.025 else self.dice.choice(operations))
            if operation == "downloaded" and not model.is_loaded():
                continue  # a download begins beside a plug-in's file
            self.step(model, operation, random_argument(self.dice, operation, model))
            if operation == "copySlots" and self.dice.random() < 0.4:
                planned = ["pasteSlots", "choose", "plugin"]  # the last comes first
        return count


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("driver")
    parser.add_argument("--sequences", type=int, default=int(os.environ.get("KV_SECOND_OPINION_SEQUENCES", "1000")))
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()

    # In memory where there is such a folder: the program flushes every file it writes to disk.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    root = tempfile.mkdtemp(prefix="kv-second-opinion-", dir=memory)
    driver = subprocess.Popen([arguments.driver], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                              encoding="utf-8")
    began, operations = time.monotonic(), 0
    try:
        for seed in range(arguments.seed, arguments.seed + arguments.sequences):
            folder = os.path.join(root, str(seed))
            sequence = Sequence(seed, driver, folder)
            try:
                operations += sequence.run()
            except Disagreement as disagreement:
                print(f"seed {seed}: {disagreement}\nafter: " + ", ".join(sequence.done))
                return 1
            shutil.rmtree(folder)
    finally:
        driver.stdin.close()
        driver.wait()
        shutil.rmtree(root, ignore_errors=True)
    print(f"{arguments.sequences} sequences, {operations} operations, {time.monotonic() - began:.1f} s: agreed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
