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
        self.start()

    def start(self):
        """A run of the program begins."""
        self.row = None
        self.list_plugins()
        self.path = ""
        self.edited = None  # name of the plug-in whose file is at the path
        self.mapping = []
        self.list = []
        self.offered = []  # the list, or while a scan, which is no edit, has emptied it, the one before
        self.search, self.only_unmapped = "", False
        self.searched = ""  # when the list was last arranged
        self.placed, self.on_pots = [], set()
        self.shown = []  # positions in the list, a row each
        self.selected = -1
        self.total, self.current, self.mode, self.cell = 1, 1, 0, 0
        self.pots = ["-" if self.has_windows else ""] * 8
        self.tips = [""] * 8
        self.page = self.pages = self.subtitle = ""
        self.title, self.help = "Please Select a plugin", "Please Select a Plugin"
        self.chart = ""
        self.undos, self.redos = [], []
        self.saved, self.saved_mode = [], 0
        self.revision = self.dated = self.edited_at = 0
        self.kept = self.draft_left = self.draft_step = None
        self.look_at_drafts()
        self.alerts, self.opened = [], []

    # What is seen

    def order(self):
        return [joined(e) for e in self.mapping]

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
            "chart": checksum(self.chart), "canUndo": bool(self.undos), "canRedo": bool(self.redos),
            "changedPots": self.changed(), "unsaved": self.is_unsaved(), "drafted": sorted(self.drafted & self.listed),
            "draft": left and [self.pots_in(left), checksum("".join(each + "\n" for each in left["Order"])),
                               left["TotalPages"], left["Page"], left["Mode"], left["MadeAt"]],
            "alerts": self.alerts, "opened": self.opened,
        }

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
        self.list, self.selected = content, -1
        self.arrange()

    def arrange(self):
        chosen = self.shown[self.selected] if self.selected >= 0 else None
        words = folded(self.search).split()
        is_same_search, self.searched = self.search == self.searched, self.search
        self.shown = [at for at, entry in enumerate(self.list)
                      if at == 0 or (at == chosen and is_same_search) or all(self.finds(w, entry) for w in words)]
        if self.only_unmapped:
            self.shown = [at for at in self.shown if at == chosen or joined(self.list[at]) not in self.on_pots]
        self.selected = self.shown.index(chosen) if chosen in self.shown else -1

    def finds(self, word, entry):
        return word in folded(entry[0]) or word in folded(entry[1]) or joined(entry) in self.elements_on(word)

    def elements_on(self, word):
        pots = pots_meant(word)
        return self.placed[pots[0]:pots[1]] if pots else ()

    def choose_row(self, row):
        self.selected = int(row) if 0 <= int(row) < len(self.shown) else -1

    def select_next(self):
        if 0 <= self.selected < len(self.shown) - 1:
            self.selected += 1

    def look_for(self, text):
        if text == self.search:
            return
        self.search = text
        self.arrange()
        if text and self.selected < 1:
            self.choose_row(1)

    def show_only_unmapped(self, only):
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
        self.edit(replace)
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

    def edit(self, action):
        before, path = self.snapshot(), self.path
        self.is_refreshed = True
        action()
        after = self.snapshot()
        draft_step, self.draft_step = self.draft_step, None
        if self.path != path:
            self.undos, self.redos = [], []
            self.revision += 1
        elif (before[:3], before[4]) != (after[:3], after[4]):
            self.undos.append((before, after, draft_step))
            self.redos = []
            self.revision += 1

    def go_to(self, there, back, leaves):
        if leaves:
            self.leave_edits()
            self.draft_step = None
        self.revision += 1
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

    def scan(self, _):
        self.keep()
        self.is_refreshed = True
        self.row = None
        self.offered = self.list or self.offered
        self.list_plugins()
        self.look_at_drafts()
        self.offer([])
        self.search = ""
        self.title, self.help = "Please Select a plugin", "Please Select a Plugin"

    def plugin(self, name):
        if name not in self.listed:
            return
        self.row = name
        self.edit(self.choose)

    def choose(self):
        self.leave_edits()
        kind, folder = self.plugins[self.row]
        self.current = 1
        self.title = f"{self.row} ({kind})"
        self.path = os.path.join(folder, FILE)
        self.edited = self.row
        self.mark()
        self.load(FILE, True)
        self.saved, self.saved_mode = self.order(), self.mode
        self.refresh(1)
        self.selected = 0
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
        mode = self.mode
        if takes_mode:
            recorded = content.get(MODE) or [None]
            truth = isinstance(recorded[0], bool)
            mode = {"1": 1, "0": 0}.get(str(int(recorded[0]) if truth else recorded[0]), -1)
        self.search = ""
        offered = [empty(0, 0)]
        for element in content.get(CATALOGUE, []):
            number, parameter = split(element)
            if mode == -1 and "olume" in element:
                mode = 1
            if (number, parameter) != ("0", "-"):
                offered.append([number, parameter, 0, 0])
        self.offer(offered)
        self.selected = 0
        self.mode = 0 if mode == -1 else mode
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
            self.saved = self.order()
        self.refresh(1)
        self.selected = 0
        self.show_mode(self.row or "")

    def change_mode(self, mode):
        def change():
            if self.changed() > 0:
                self.leave_edits()
            self.set_mode(int(mode), True)
            self.look_for_draft()
        self.cell = int(mode)
        if self.is_edited():
            self.edit(change)

    # Files

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
            self.saved, self.saved_mode = self.order(), self.mode
            self.is_refreshed = True
            self.drafts.current = None
            for draft in self.drafts.left_of(self.path):
                self.drafts.left.remove(draft)
            self.look_for_draft()
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
        self.edit(self.choose)
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
            self.selected = 0
            self.look_for_draft()
        self.edit(load)
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
        self.edit(remove)

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
        self.edit(exchange)

    # Slots

    def swap(self, one, other):
        a, b = self.mapping[one], self.mapping[other]
        a[:2], b[:2] = b[:2], a[:2]

    def exchange(self, pots):
        def swap():
            first = (self.current - 1) * 8
            self.swap(first + int(pots[0]), first + int(pots[1]))
            self.refresh(self.current)
        if self.is_loaded():
            self.edit(swap)

    def pot(self, pot):
        if not self.is_loaded() or self.selected < 0:
            return

        def assign():
            source = self.list[self.shown[self.selected]]
            self.mapping[(self.current - 1) * 8 + int(pot)][:2] = source[:2]
            self.refresh(self.current)
            if source[1] != "-":
                self.select_next()
        self.edit(assign)

    def carry_out(self, operation, argument):
        self.alerts, self.opened = [], []
        self.is_refreshed = operation in ("undo", "redo")
        self.now += 1
        loaded = self.is_loaded()
        {
            "scan": self.scan, "plugin": self.plugin, "mode": self.change_mode, "save": self.save,
            "recall original": lambda _: self.recall(".original"), "recall previous": lambda _: self.recall(".prev"),
            "chart": self.write_chart, "downloaded": self.downloaded, "undo": self.undo, "redo": self.redo,
            "previous": lambda _: self.show(max(self.current - 1, 1)),
            "next": lambda _: self.show(min(self.current + 1, self.total)),
            "first": lambda _: self.show(1), "last": lambda _: self.show(self.total),
            "page": lambda page: self.show(int(page)),
            "new": lambda _: loaded and self.edit(self.new), "delete": self.delete,
            "clear": lambda _: loaded and self.edit(self.clear),
            "move first": lambda _: self.move(1), "move last": lambda _: self.move(self.total),
            "move previous": lambda _: self.move(self.current - 1),
            "move next": lambda _: self.move(self.current + 1),
            "exchange": self.exchange, "pot": self.pot, "row": self.choose_row, "search": self.look_for,
            "only unmapped": self.show_only_unmapped, "keep": self.keep, "bring back": self.bring_back,
            "discard": self.discard, "quit": self.quit, "crash": self.crash,
        }[operation](argument)
        if self.is_refreshed:
            self.placed = [None if entry[1] == "-" else joined(entry) for entry in self.mapping[:self.total * 8]]
            self.on_pots = set(self.placed)
            if self.only_unmapped or any(pots_meant(word) for word in folded(self.search).split()):
                self.arrange()


# Random files and operations

WORDS = ["Cutoff", "Freq", "Volume", "Master volume", "Osc 1 Level", "R&D <b>", "Größe", "音量", "a  b", "-", "", "Mix",
         "\U0001f39b", "Q", "'quoted'", "100%@", "x" * 60]


def random_element(dice):
    kind = dice.random()
    if kind < 0.2:
        return "-1"
    if kind < 0.25:
        return dice.choice(["5", "", "olume", "Volume", "-", "0"])
    if kind < 0.3:
        return dice.choice([" leading", "0 -", "7 -", "3 ", "  ", "-1 x", "12 0", "0 0"])
    word = dice.choice(WORDS) if dice.random() < 0.3 else f"Knob {dice.randrange(60)}"
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


OPERATIONS = (["pot"] * 12 + ["row"] * 6 + ["new"] * 3 + ["delete"] * 2 + ["clear"] + ["previous", "next", "first", "last"]
              + ["page"] * 2 + ["move first", "move last", "move previous", "move next"] * 2 + ["exchange"] * 2
              + ["mode"] + ["save"] * 2 + ["recall original", "recall previous"] + ["chart"] + ["downloaded"]
              + ["plugin"] * 2 + ["undo"] * 5 + ["redo"] * 3 + ["keep"] * 2 + ["bring back"] * 2 + ["discard"])
SEARCHES = ["", "", "Knob", "knob 1", "1", "GROSSE", "o", "量", "<B>", " ", "nothing has this", "1 knob", "p1", "p2 o",
            "1·2", "2.1", "p1 p2"]


def random_argument(dice, operation, model):
    if operation == "plugin":
        return dice.choice(list(model.plugins))
    if operation == "row":
        return str(dice.randrange(-1, max(len(model.list), 1) + 1))
    if operation == "pot":
        return str(dice.randrange(8))
    if operation == "page":
        return str(dice.randrange(0, model.total + 2))
    if operation == "exchange":
        return f"{dice.randrange(8)}{dice.randrange(8)}"
    if operation in ("mode", "only unmapped"):
        return str(dice.randrange(2))
    if operation == "search":
        return dice.choice(SEARCHES)
    return ""


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
        answer["drafted"].sort()
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
        operations = OPERATIONS + (["search"] * 4 + ["only unmapped"] * 3 if has_windows else [])
        answer = self.ask("begin in windows" if has_windows else "begin", self.root)
        model.begin(answer["now"], answer["drafts"], has_windows)
        count = self.dice.randrange(30, 101)
        # Some begin before anything was selected; the others with a plug-in.
        if self.dice.random() < 0.9:
            self.step(model, "plugin", self.dice.choice(list(model.plugins)))
        for _ in range(count):
            rare = self.dice.random()
            operation = ("scan" if rare < 0.01 else "quit" if rare < 0.02 else "crash" if rare < 0.025
                         else self.dice.choice(operations))
            if operation == "downloaded" and not model.is_loaded():
                continue  # a download begins beside a plug-in's file
            self.step(model, operation, random_argument(self.dice, operation, model))
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
