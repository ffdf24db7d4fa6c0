#!/usr/bin/env python3
"""Writes demo/community anew: the mappings that the demo's community server holds from the start.

Everything here is made up, the people included. Each is a file as the program saves it: the order moved about, the mode
and the whole catalogue beside it.
"""

import json
import plistlib
import shutil

from make_library import (EMPTY, LIBRARY, MODE_KEY, ORDER_KEY, UNIQUE_KEY, catalogue, obrelle, quillmoor_echo,
                          wendlebrook_eq)

FOLDER = LIBRARY.parent / "community"


def rearranged(plug_in, names, mode):
    """The plug-in's file with these parameters under its pots, in this order; None is an empty slot."""
    supplied = plug_in()[ORDER_KEY]
    by_name = {element.split(" ", 1)[1]: element for element in supplied if element != EMPTY}
    return {ORDER_KEY: [by_name[name] if name else EMPTY for name in names], MODE_KEY: [mode],
            UNIQUE_KEY: catalogue(supplied)}


MAPPINGS = [
    ("bands-on-pots.plist", "Wendlebrook EQ", "Isolde Karn",
     "One band under each pair of pots, gain first. Bypass stays on the last pot of every page.",
     rearranged(wendlebrook_eq,
                ["Low Gain", "Low Frequency", "Mid Gain", "Mid Frequency", "High Gain", "High Frequency",
                 "Output Gain", "Bypass",
                 "Low On", "Low Q", "Mid On", "Mid Q", "High On", "High Q", None, "Bypass"], "0")),
    ("gains-only.plist", "Wendlebrook EQ", "Teo Marrable",
     "For live use: just the gains, well apart.\nNothing to hit by mistake in the dark.",
     rearranged(wendlebrook_eq,
                ["Low Gain", None, "Mid Gain", None, "High Gain", None, None, "Output Gain"], "0")),
    ("tape-first.plist", "Quillmoor Echo", "Isolde Karn",
     "Flutter and freeze where the hand is; left and right on a page each.",
     rearranged(quillmoor_echo,
                ["Dry", "Wet", "Tempo Sync", "Groove", "Tape Flutter", "Flutter Rate", None, "Freeze"]
                + [f"{side} {what}" for side in ("Left", "Right")
                   for what in ("Delay Time", "Note Value", "Feedback", "Low Cut", "High Cut", "Cross Feed", "Pan",
                                "Level")], "0")),
    ("macros-and-filter.plist", "Obrelle", "Wren Ostlund",
     "The eight macros, then both filters side by side – “two pages are enough for a gig”.",
     rearranged(obrelle,
                [f"Macro {n}" for n in range(1, 9)]
                + [f"Filter {n} {what}" for n in (1, 2) for what in ("Cutoff Freq", "Resonance", "Drive", "Mix")],
                "1")),
]


def main():
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir()
    entries = []
    for file, plug_in, user, comments, content in MAPPINGS:
        (FOLDER / file).write_bytes(plistlib.dumps(content, sort_keys=False))
        entries.append({"file": file, "plugin": plug_in, "user": user, "comments": comments})
    (FOLDER / "mappings.json").write_text(json.dumps(entries, indent=2, ensure_ascii=False) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
