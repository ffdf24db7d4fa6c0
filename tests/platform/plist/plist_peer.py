"""The other side of PropertyListPeersTest: documents made and read by plistlib, and converted by plistutil.

    plist_peer.py make FOLDER     writes NAME.canon and, as far as plistlib can, NAME.xml and NAME.bin
    plist_peer.py check FOLDER    reads every NAME.*.xml and NAME.*.bin and compares it with NAME.canon
    plist_peer.py rules FOLDER    reads every file that values.txt lists and compares it with what is said there

A .canon file has one line: the value in a notation that has one spelling for one value. values.txt has a line for each
file: its name, how plistlib fares ("same", "refused" or "other", which is a value of its own) and the value, in a
notation for people.
"""

import datetime
import pathlib
import plistlib
import random
import struct
import subprocess
import sys

EPOCH = datetime.datetime(2001, 1, 1)
DOCUMENTS_PER_KIND = 80
CONVERTED_DOCUMENTS = 60

INTEGERS = [0, 1, -1, 127, 128, 255, 256, 65535, 65536, 2**31 - 1, 2**31, 2**32 - 1, 2**32, -2**31, -2**31 - 1,
            2**63 - 1, 2**63, 2**64 - 1, -2**63]
REALS = [1.0, -1.5, 0.1, 1e22, 1e-7, 123456789.125, 5e-324, 2.2250738585072014e-308, 1.7976931348623157e308,
         float("inf"), float("-inf"), float("nan")]
TEXTS = ["", " ", " both ends ", "\n", "a\nb\tc", "<&>\"'", "]]>", "&amp;", "é", "日本語", "\U0001F3B9\U0010FFFD",
         "\x7f\x85\u2028", "\ufeffmark", "x" * 14, "x" * 15, "x" * 300, "ü" * 20]


def canon(value):
    if value is None:
        return "n"
    if isinstance(value, bool):
        return "t" if value else "f"
    if isinstance(value, int):
        return f"i{value}"
    if isinstance(value, float):
        return "r" + struct.pack(">d", value).hex()
    if isinstance(value, str):
        return "s" + value.encode().hex()
    if isinstance(value, bytes):
        return "d" + value.hex()
    if isinstance(value, datetime.datetime):
        return "D" + struct.pack(">d", (value - EPOCH).total_seconds()).hex()
    if isinstance(value, plistlib.UID):
        return f"u{value.data}"
    if isinstance(value, list):
        return "[" + ",".join(map(canon, value)) + "]"
    return "{" + ",".join(f"{canon(k)}:{canon(v)}" for k, v in value.items()) + "}"


class Maker:
    """Random values. `kind` says who can hold them: "plain" everybody, "returns" (with carriage returns, which plistlib
    cannot write as XML), "binary" the binary form only, "modest" also plistutil."""

    def __init__(self, seed, kind):
        self.random = random.Random(seed)
        self.kind = kind
        # plistlib takes 0.0 and -0.0 for one object of a binary file, so a document has one of them; plistutil drops the
        # sign.
        self.zero = self.random.choice([0.0, -0.0]) if kind != "modest" else 0.0

    def text(self):
        r = self.random
        texts = TEXTS + (["\r", "a\r\nb", "\r\n"] if self.kind in ("returns", "binary") else [])
        texts += ["\0", "a\0b", "\x01\x1f", "\ufffe\uffff"] if self.kind == "binary" else []
        if r.random() < 0.5:
            return r.choice(texts)
        alphabet = r.choice(["abcdefgh ", "aé日", "\U0001F3B9\U00010000z", "\n\t <&>"])
        return "".join(r.choice(alphabet) for _ in range(r.randrange(40)))

    def integer(self):
        r = self.random
        return r.choice(INTEGERS) if r.random() < 0.5 else r.randrange(-2**r.randrange(1, 64), 2**r.randrange(1, 65))

    def real(self):
        r = self.random
        if r.random() < 0.5:
            return r.choice(REALS + [self.zero])
        return struct.unpack(">d", struct.pack(">Q", r.randrange(2**63 - 2**53)))[0]

    def date(self):
        r = self.random
        # plistutil writes a year before 1000 with fewer digits
        date = datetime.datetime(r.randrange(1000 if self.kind == "modest" else 1, 10000), r.randrange(1, 13), r.randrange(1, 29), r.randrange(24),
                                 r.randrange(60), r.randrange(60))
        return date + datetime.timedelta(microseconds=500000 * (self.kind == "binary"))

    def leaf(self):
        r = self.random
        makers = [self.text, self.text, self.integer, self.real, lambda: r.random() < 0.5,
                  lambda: r.randbytes(r.choice([0, 1, 2, 3, 14, 15, 56, 57, 58, 300])), self.date]
        if self.kind == "binary":
            makers.append(lambda: plistlib.UID(r.choice([0, 255, 256, 65536, 2**32])))
        return r.choice(makers)()

    def value(self, depth):
        r = self.random
        choice = r.random()
        if depth == 0 or choice < 0.4:
            return self.leaf()
        if choice < 0.65:
            return [self.value(depth - 1) for _ in range(r.choice([0, 1, 3, 14, 15, 20]))]
        return {self.text(): self.value(depth - 1) for _ in range(r.choice([0, 1, 3, 14, 20]))}

    def document(self):
        value = {"leaf": self.leaf(), "tree": self.value(3), "more": [self.value(2) for _ in range(4)]}
        if self.kind == "binary":
            value["only binary"] = plistlib.UID(7)
        if self.kind == "returns":
            value["returns"] = "one\rtwo\r\n"
        return value


def make(folder):
    for kind in ("plain", "returns", "binary", "modest"):
        for i in range(DOCUMENTS_PER_KIND):
            value = Maker(f"{kind}{i}", kind).document()
            path = folder / f"{kind}{i}"
            path.with_suffix(".canon").write_text(canon(value))
            path.with_suffix(".bin").write_bytes(plistlib.dumps(value, fmt=plistlib.FMT_BINARY, sort_keys=False))
            if kind in ("plain", "modest"):
                path.with_suffix(".xml").write_bytes(plistlib.dumps(value, fmt=plistlib.FMT_XML, sort_keys=False))


def problem(path, expected):
    """What is wrong with a file, or None."""
    data = path.read_bytes()
    if data.startswith(b"bplist00") != (path.suffix == ".bin"):
        return "is of the other form"
    try:
        found = canon(plistlib.loads(data))
    except Exception as error:
        return f"is unreadable: {error!r}"
    if found == expected:
        return None
    at = max(0, next((i for i, (a, b) in enumerate(zip(found, expected)) if a != b), 0) - 40)
    return f"differs: ...{found[at:at + 120]} instead of ...{expected[at:at + 120]}"


def check(folder):
    checked = converted = 0
    problems = []
    for path in sorted(folder.glob("*.*.*")):
        expected = (folder / path.name.split(".")[0]).with_suffix(".canon").read_text()
        checked += 1
        problems.append((path.name, problem(path, expected)))
        if path.name.startswith("modest") and converted < CONVERTED_DOCUMENTS:
            converted += 1
            other = folder / (path.stem + (".converted.xml" if path.suffix == ".bin" else ".converted.bin"))
            subprocess.run(["plistutil", "-i", path, "-f", other.suffix[1:], "-o", other], check=True)
            problems.append((other.name, problem(other, expected)))
    for name, what in problems:
        if what:
            print(name, what)
    print(f"checked {checked}, converted {converted}")
    return any(what for _, what in problems)


def plain(value):
    """The notation of values.txt."""
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, int):
        return str(value)
    if isinstance(value, float):
        return f"real {value:.17g}"
    if isinstance(value, str):
        shown = (chr(b) if 0x20 <= b < 0x7f and b not in b'"\\' else f"\\x{b:02x}" for b in value.encode())
        return '"' + "".join(shown) + '"'
    if isinstance(value, bytes):
        return f"<{value.hex()}>"
    if isinstance(value, datetime.datetime):
        return f"date {(value - EPOCH).total_seconds():.17g}"
    if isinstance(value, list):
        return "[" + ", ".join(map(plain, value)) + "]"
    return "{" + ", ".join(f"{plain(k)}: {plain(v)}" for k, v in value.items()) + "}"


def rules(folder):
    counts = {"same": 0, "refused": 0, "other": 0}
    wrong = False
    for line in (folder / "values.txt").read_text().splitlines():
        name, expected, value = line.split("\t")
        try:
            found = plain(plistlib.loads((folder / f"{name}.plist").read_bytes()))
        except Exception:
            found = "refused"
        fared = "same" if found == value else "refused" if found == "refused" else "other"
        counts[fared] += 1
        if fared != expected:
            wrong = True
            print(f"{name}: {fared} instead of {expected}: {found}")
    print(counts)
    return wrong


if __name__ == "__main__":
    run = {"make": make, "check": check, "rules": rules}[sys.argv[1]]
    sys.exit(run(pathlib.Path(sys.argv[2])))
