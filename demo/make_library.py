#!/usr/bin/env python3
"""Writes demo/library anew: fourteen invented plug-ins, laid out as a Mac keeps them.

Everything here is made up, makers and plug-ins alike. The same script always writes the same bytes, so that a
change of the library shows up in a diff as exactly that change. See README.md for what each plug-in is there for.
"""

import datetime
import plistlib
import shutil
from pathlib import Path

LIBRARY = Path(__file__).resolve().parent / "library"
BUILT_IN = "Library/Application Support/Logic/Plug-In Settings"
PRESETS = "home/Library/Audio/Presets"

ORDER_FILE = "CSParameterOrder.plist"
ORDER_KEY = "ControlSurfaceParameterOrder"
UNIQUE_KEY = "KorvelCSUnique"
MODE_KEY = "KorvelCSMode"

EMPTY = "-1"
POTS = 8


# -- building orders -----------------------------------------------------------------------------------------------


def numbered(names, first=0, skip_after=()):
    """One element a name; None is an empty slot. Real plug-ins leave numbers out, hence skip_after."""
    order, number = [], first
    for name in names:
        if name is None:
            order.append(EMPTY)
            continue
        order.append(f"{number} {name}")
        number += 2 if name in skip_after else 1
    return order


def paged(sections, first=0, skip=2):
    """Every section starts on a page of its own, and its numbers start a little after the last section's."""
    order, number = [], first
    for names in sections:
        for name in names:
            order.append(f"{number} {name}")
            number += 1
        order += [EMPTY] * (-len(names) % POTS)
        number += skip
    return order


def catalogue(order):
    """The catalogue as the program builds it from an order that it has never changed."""
    return [EMPTY] + list(dict.fromkeys(element for element in order if element != EMPTY))


# -- the plug-ins of the machine-wide folder -----------------------------------------------------------------------


def wendlebrook_eq():
    names = ["Bypass"]
    for band in ("Low", "Mid", "High"):
        names += [f"{band} On", f"{band} Frequency", f"{band} Gain", f"{band} Q"]
    names += ["Output Gain"]
    return {ORDER_KEY: numbered(names, skip_after={"Bypass", "Low Q", "Mid Q", "High Q"})}


def pemmerick_press():
    names = ["Threshold", "Ratio", "Attack", "Release", "Knee", "Make-up Gain", "Auto Release", "Mix",
             "Side Chain High Pass", "Detector Peak/RMS", "Limiter On", "Limiter Ceiling"]
    return {ORDER_KEY: numbered(names, first=1, skip_after={"Make-up Gain", "Mix"})}


def quillmoor_echo():
    names = []
    for side in ("Left", "Right"):
        names += [f"{side} Delay Time", f"{side} Note Value", f"{side} Feedback", f"{side} Low Cut", f"{side} High Cut",
                  f"{side} Cross Feed", f"{side} Pan", f"{side} Level"]
    names += ["Tempo Sync", "Groove", "Tape Flutter", "Flutter Rate", "Freeze", "Dry", "Wet"]
    return {ORDER_KEY: numbered(names, skip_after={"Left Level", "Right Level", "Groove"})}


def thistlewick_hall():
    names = ["Room Size", "Reverb Time", "Predelay", "Predelay Sync", "Diffusion", "Density", "Early/Late Balance",
             "Width", "Low Crossover", "Low Ratio", "High Crossover", "High Ratio", "Damping", "Modulation Rate",
             "Modulation Depth", "Ducking Amount", "Ducking Release", "Input Low Cut", "Input High Cut", "Freeze",
             "Dry", "Wet"]
    return {ORDER_KEY: numbered(names, first=1, skip_after={"Predelay Sync", "Width", "High Ratio"})}


def ploverton_tuner():
    return {ORDER_KEY: []}


def skerrivane_filter():
    # Cutoff lies on every page and Drive twice in a row: the catalogue must hold each of them once.
    return {ORDER_KEY: [
        "3 Cutoff", "4 Resonance", EMPTY, "6 Drive", "6 Drive", EMPTY, EMPTY, "12 Mix",
        "3 Cutoff", EMPTY, "20 LFO Rate", "21 LFO Depth", "22 LFO Shape", EMPTY, "3 Cutoff", EMPTY,
        EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, EMPTY,
        "3 Cutoff", "40 Envelope Attack", "41 Envelope Release", "4 Resonance", EMPTY, "20 LFO Rate", "12 Mix",
    ]}


# -- other makers' plug-ins ----------------------------------------------------------------------------------------


def obrelle():
    """300 parameters on 40 pages of 320 slots."""
    sections = [[f"Macro {n}" for n in range(1, 9)]]
    for n in (1, 2, 3):
        sections.append([f"Osc {n} {what}" for what in (
            "On", "Wave", "Octave", "Semitone", "Fine Tune", "Level", "Pan", "Phase",
            "Pulse Width", "PW Mod Depth", "Sync", "FM Amount", "Unison Voices", "Unison Detune", "Unison Spread",
            "Key Follow")])
    sections.append(["Sub Wave", "Sub Octave", "Sub Level", "Noise Colour", "Noise Level", "Noise Width"])
    sections.append(["Mix Osc 1", "Mix Osc 2", "Mix Osc 3", "Mix Sub", "Mix Noise", "Mix Ring Mod", "Mix Filter Split",
                     "Mix Drive"])
    for n in (1, 2):
        sections.append([f"Filter {n} {what}" for what in (
            "On", "Type", "Cutoff Freq", "Resonance", "Drive", "Env Amount", "Env Velocity", "Key Follow",
            "LFO Amount", "LFO Source", "FM Source", "FM Amount", "Pan", "Spread", "Mix", "Level")])
    for name in ("Amp Env", "Filter Env", "Mod Env 1", "Mod Env 2"):
        sections.append([f"{name} {what}" for what in (
            "Delay", "Attack", "Hold", "Decay", "Sustain", "Release", "Velocity", "Curve")])
    for n in (1, 2, 3, 4):
        sections.append([f"LFO {n} {what}" for what in (
            "Shape", "Rate", "Tempo Sync", "Phase", "Fade In", "Depth", "Key Trigger")])
    # Sixteen connections, two a page.
    for n in range(1, 17, 2):
        sections.append([f"Mod {slot} {what}" for slot in (n, n + 1)
                         for what in ("Source", "Via", "Destination", "Amount")])
    sections.append(["Arp On", "Arp Mode", "Arp Rate", "Arp Gate", "Arp Swing", "Arp Octaves", "Arp Latch", "Arp Hold",
                     "Arp Velocity", "Arp Accent", "Arp Chance", "Arp Repeat", "Arp Transpose", "Arp Length"])
    sections.append([f"Step {n} Pitch" for n in range(1, 17)])
    sections.append([f"Step {n} Gate" for n in range(1, 17)])
    sections.append(["Chorus On", "Chorus Rate", "Chorus Depth", "Chorus Delay", "Chorus Width", "Chorus Mix"])
    sections.append(["Delay On", "Delay Time", "Delay Sync", "Delay Feedback", "Delay Tone", "Delay Ping Pong",
                     "Delay Mix"])
    sections.append(["Reverb On", "Reverb Size", "Reverb Time", "Reverb Predelay", "Reverb Damping", "Reverb Width",
                     "Reverb Mix"])
    sections.append(["Drive On", "Drive Type", "Drive Amount", "Drive Tone", "Drive Mix"])
    sections.append(["Master Volume", "Master Tune", "Voices"])

    order = paged(sections)
    assert len(order) == 320 and len(catalogue(order)) == 301
    return {ORDER_KEY: order}


def dunmarrow_strip():
    """Marked, edited and saved by the program before: the order is shorter than the catalogue and moved about."""
    supplied = numbered(
        ["Input Trim", "Phase", "High Pass", "Gate Threshold", "Gate Release", "Comp Threshold", "Comp Ratio",
         "Comp Attack", "Comp Release", "Low Gain", "Low Mid Freq", "Low Mid Gain", "High Mid Freq", "High Mid Gain",
         "High Gain", "De-esser", "Saturation", "Output Trim"],
        skip_after={"High Pass", "Gate Release", "Comp Release", "High Gain"})
    by_name = {element.split(" ", 1)[1]: element for element in supplied}
    edited = [by_name.get(name, EMPTY) for name in (
        "Comp Threshold", "Comp Ratio", "Comp Attack", "Comp Release", "", "", "Saturation", "Output Trim",
        "Low Gain", "Low Mid Freq", "Low Mid Gain", "High Mid Freq", "High Mid Gain", "High Gain", "", "High Pass")]
    # No name in it speaks of a volume, so that instrument mode can only have come from the stored key.
    return {ORDER_KEY: edited, MODE_KEY: ["1"], UNIQUE_KEY: catalogue(supplied)}


def rattlewold_drums():
    voices = ("Kick", "Sub Kick", "Snare", "Rim", "Clap", "Closed Hat", "Open Hat", "Low Tom", "Mid Tom", "High Tom",
              "Cymbal", "Cowbell")
    sections = [[f"{voice} {what}" for what in ("Tune", "Attack", "Decay", "Tone", "Drive", "Pan", "Send", "Volume")]
                for voice in voices]
    sections.append(["Swing", "Accent", "Bus Compression", "Bus Drive", "Room Size", "Room Level", "Master Volume"])
    return {ORDER_KEY: paged(sections, first=1, skip=1)}


def brindle():
    names = ["Dry & Wet", "<b>Bold</b> Drive", "\"Quoted\" Tone", "Player's Choice", "A < B > C", "&amp; Literal",
             "<img src=x> Width", "100% Mix", "%@ Format %i", "Back\\slash Gain", "</td></tr> Row", "Tab\tInside",
             "  Two Blanks First", "Semi;colon #9", "]]> Closing", "<!-- Comment -->"]
    return {ORDER_KEY: numbered(names, first=1, skip_after={"Player's Choice", "100% Mix"})}


def echo_d_ete():
    names = ["Temps d’écho", "Réinjection", "Tonalité", "Largeur stéréo", "Rückkopplung", "Höhen", "Größe", "Übergang",
             "カットオフ", "レゾナンス", "ディレイ時間", "揺らぎ", "音量", "空間の広さ", "🌊 Vague", "🌙 Nuit",
             "Ångström", "Señal", "Głębia", "Глубина", "Ένταση", "👩‍🎤 Voix", "Mélange", "½ Tempo"]
    return {ORDER_KEY: numbered(names, first=1, skip_after={"Übergang", "🌙 Nuit"})}


def ullswen_phaser():
    names = ["Rate", "Tempo Sync", "Depth", "Stages", "Centre Frequency", "Spread", "Feedback", "Stereo Phase",
             "Envelope Amount", "Envelope Attack", "Envelope Release", "Manual Sweep", "Mix"]
    return {ORDER_KEY: numbered(names, skip_after={"Stages", "Stereo Phase"})}


def corrimoor_amp():
    names = ["Gain", "Bass", "Middle", "Treble", "Presence", "Sag", "Bright", "Master", "Cabinet", "Microphone",
             "Mic Distance", "Mic Angle", "Gate", "Tremolo Speed", "Tremolo Depth", "Spring Reverb", "Output"]
    return {
        "Auxiliary Notes": "left here by another program",
        ORDER_KEY: numbered(names, skip_after={"Master", "Mic Angle"}),
        "Checked": True,
        "Factory": False,
        "Format Version": 3,
        "Largest": 9223372036854775807,
        "Offset": -42,
        "Ratio": 0.1,
        "Saved On": datetime.datetime(2021, 3, 14, 15, 9, 26),
        "Thumbnail": bytes(range(0, 256, 5)),
        "Tags": ["amp", "größer", "", ["nested", 1, 2.5, False]],
        "View": {"Zoom": 1.25, "Colours": {"Panel": "#20242b", "Text": "#f4f1e8"}, "Windows": [], "Extra": {}},
    }


def longwether_matrix():
    sources = ("Envelope Follower", "Random Sample and Hold", "Polyphonic Key Pressure", "Tempo-Synced Sequence")
    targets = ("Formant Filter Bank Upper Cutoff Frequency", "Granular Cloud Position and Density",
               "Resonator String Damping and Brightness")
    names = []
    for target in targets:
        for source in sources:
            names.append(f"Depth from {source} to {target}")
    names += ["Mix", "Overall Depth of Every Connection, Scaled per Note and Smoothed over 1/16 Notes."]
    assert max(len(name) for name in names) == 80
    return {ORDER_KEY: numbered(names, skip_after={"Mix"})}


# -- writing -------------------------------------------------------------------------------------------------------

PLUG_INS = [
    (f"{BUILT_IN}/Wendlebrook EQ", wendlebrook_eq, plistlib.FMT_XML),
    (f"{BUILT_IN}/Pemmerick Press", pemmerick_press, plistlib.FMT_XML),
    (f"{BUILT_IN}/Quillmoor Echo", quillmoor_echo, plistlib.FMT_XML),
    (f"{BUILT_IN}/Thistlewick Hall", thistlewick_hall, plistlib.FMT_XML),
    (f"{BUILT_IN}/Ploverton Tuner", ploverton_tuner, plistlib.FMT_XML),
    (f"{BUILT_IN}/Skerrivane Filter", skerrivane_filter, plistlib.FMT_XML),
    (f"{PRESETS}/Fennimark Audio/Obrelle", obrelle, plistlib.FMT_XML),
    (f"{PRESETS}/Fennimark Audio/Dunmarrow Strip", dunmarrow_strip, plistlib.FMT_XML),
    (f"{PRESETS}/Brasswick & Lund/Rattlewold Drums", rattlewold_drums, plistlib.FMT_XML),
    (f"{PRESETS}/Brasswick & Lund/Brindle <b> & Co", brindle, plistlib.FMT_XML),
    (f"{PRESETS}/Atelier Nuitclaire/Écho d’été 🌊", echo_d_ete, plistlib.FMT_XML),
    (f"{PRESETS}/Vellumotive/Ullswen Phaser", ullswen_phaser, plistlib.FMT_BINARY),
    (f"{PRESETS}/Vellumotive/Corrimoor Amp", corrimoor_amp, plistlib.FMT_XML),
    (f"{PRESETS}/Kestrelind/Longwether Matrix", longwether_matrix, plistlib.FMT_XML),
]

# None of these may turn up in the plug-in list.
DECOYS = {
    f"{BUILT_IN}/Wendlebrook EQ/Vocal Air.pst": "A setting of Wendlebrook EQ; nothing to do with control surfaces.\n",
    f"{BUILT_IN}/Pemmerick Press/Drum Bus.pst": "A setting of Pemmerick Press; nothing to do with control surfaces.\n",
    f"{BUILT_IN}/Retired Plug-in/csparameterorder.plist": "The name differs in case.\n",
    f"{BUILT_IN}/Retired Plug-in/CSParameterOrder.plist.prev": "A backup whose original is gone.\n",
    f"{PRESETS}/Fennimark Audio/Obrelle/Glass Harbour.aupreset": "A preset of Obrelle.\n",
    f"{PRESETS}/Kestrelind/Folder In Disguise/CSParameterOrder.plist/read me.txt":
        "The folder this lies in has the name of a parameter-order file.\n",
}


def main():
    files = {f"{folder}/{ORDER_FILE}": plistlib.dumps(build(), fmt=form, sort_keys=False)
             for folder, build, form in PLUG_INS}
    files |= {name: text.encode() for name, text in DECOYS.items()}

    # Only now, when everything could be built, does the old library go.
    shutil.rmtree(LIBRARY, ignore_errors=True)
    for name, content in files.items():
        path = LIBRARY / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)


if __name__ == "__main__":
    main()
