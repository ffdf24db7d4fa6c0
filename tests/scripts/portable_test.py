"""The scripts are written in what bash 3.2 and the tools of macOS know. Neither is here, so their lines are searched for what
is known to be missing there. That finds words, not meaning: not what a variable holds, not a difference in how a tool
that both systems have does its work, and nothing that is not in the table. scripts_test.py runs the scripts, with
another shell where KV_BASH names one."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRIPTS = [path for path in sorted((ROOT / "scripts").iterdir()) if path.suffix == ""]

# What is missing, and a line that has it.
MISSING = {
    # bash 3.2
    r"\b(mapfile|readarray)\b": "mapfile -t lines <file",
    r"\$\{?(BASHPID|EPOCHSECONDS|EPOCHREALTIME|SRANDOM)\b": "kill $BASHPID",
    r"\{\w+\}[<>]": "exec {listening}<fifo",
    r"\bcoproc\b": "coproc cat",
    r"\b(declare|local|typeset)\s+-\w*[Agnlu]": "local -A byName",
    r"\bwait\s+-[nfp]": "wait -n",
    r"\$\{\w+(\[[^]]*\])?(\^|,|@[A-Za-z])": 'echo "${name,,}"',
    r"\$\{\w+\[-": "echo ${list[-1]}",
    r"\$\{\w+:[^-=?+}]*:\s*-\d": "echo ${text:0:-1}",
    r"&>>|\|&": "make &>>log",
    r"=~\s+[^$\s]*[(|]": "[[ $name =~ ^(a|b)$ ]]",
    r";;?&": "a) echo ;;&",
    r"\[\[[^]]*\s-[vR]\s": "[[ -v name ]]",
    r"\bprintf\s.*%\([^)]*\)T": "printf '%(%F)T' -1",
    r"\bread\b[^|;]*\s-t\s*\d*\.\d": "read -t 0.1 line",
    r"\bread\s[^|;]*-\w*[iN]": "read -N 3 letters",
    r"\bshopt\s+-s\s+\w*(globstar|lastpipe|inherit_errexit|assoc_expand_once)": "shopt -s globstar",
    r"\b(BASH_XTRACEFD|PIPESTATUS\[-)": "BASH_XTRACEFD=3",
    r"\{\d+\.\.\d+\.\.\d+\}": "echo {1..9..2}",
    # An empty list is an unknown variable there.
    r'=\(\)': "found=()",
    # The tools
    r"(^|[\s(|])(nproc|timeout|tac|shuf|setsid|flock|md5sum|sha\d+sum|ldd|numfmt|ionice|gawk|xdg-open)\s": "timeout 5 cat",
    r"(^|[\s(|])nproc\b": 'make -j"$(nproc)"',
    r"\bstat\s+(-c|--)": "stat -c %s file",
    r"\bsed\s+(-\S+\s+)*(-\w*i|-\w*[rsz]\b|--)": "sed -i s/a/b/ file",
    r"\bsed\s.*(\\[+?|tn]|[0-9]~[0-9])": r"sed 's/a\+/b/'",
    r"\breadlink\s+-[em]|\breadlink\s+--|\brealpath\s+-": "readlink -m .",
    r"\breadlink\s+-f": "readlink -f .",
    r"\bdate\s+(-d|-I|--|\+\S*%[N:])": "date -d yesterday",
    r"\bfind\s.*\s-(printf|regextype|readable|executable|writable)\b": "find . -printf %p",
    r"\bfind\s+-": "find -name x",
    r"\bxargs\s+(-\S+\s+)*(-\w*[rda]\b|--)": "git ls-files | xargs -r rm",
    r"\bgrep\s+(-\S+\s+)*(-\w*[PzZ]|--)": r"grep -oP '\d'",
    r"\bmktemp\s+(-\S+\s+)*(-p\b|--)|\bmktemp\b[^)]*X\.\w": "mktemp --tmpdir",
    r"\b(cp|mv|ln|mkdir|rm|ls|touch|head|tail|sort|cut|wc|du|chmod|tr|tee)\s+(-\S+\s+)*--[a-z]": "cp --reflink a b",
    r"\bcp\s+(-\S+\s+)*-\w*[tuTlsZ]": "cp -t there a",
    r"\b(mv|ln)\s+(-\S+\s+)*-\w*[tTr]\b": "ln -sr a b",
    r"\b(head|tail)\s+(-\S+\s+)*-[nc]\s*-\d": "head -n -1",
    r"\bsort\s+(-\S+\s+)*-\w*[zh]": "sort -z",
    r"\bbase64\s+-w": "base64 -w 0",
    r"\bps\s+--|\bpgrep\s+-\w*c": "ps --no-headers",
    r"\becho\s+-[ne]": "echo -e a",
    r"/proc/|/dev/(shm|fd)\b": "ls /proc/self",
}
# Lines that a Mac does not come by.
LINUX_ONLY = [
    "if [[ -z ${TMPDIR:-} && -d /dev/shm && -w /dev/shm ]]; then",
    "export TMPDIR=/dev/shm",
]


def lines_of(script):
    """The commands: without comments, and without texts that are printed as they stand."""
    ending = None
    for number, line in enumerate(script.read_text(encoding="utf-8").splitlines(), 1):
        if ending:
            if line == ending:
                ending = None
            continue
        begin = re.search(r"<<'?(\w+)'?$", line)
        ending = begin and begin.group(1)
        command = re.sub(r"(^|\s)#.*", "", line)
        if command.strip() and command.strip() not in LINUX_ONLY:
            yield number, command


class Portable(unittest.TestCase):
    def test_every_pattern_finds_what_it_is_for(self):
        for pattern, example in MISSING.items():
            with self.subTest(pattern=pattern):
                self.assertRegex(example, pattern)

    def test_there_are_scripts(self):
        self.assertLessEqual({"bench", "fuzz", "lint", "package", "run", "setup", "test"}, {path.name for path in SCRIPTS})

    def test_no_script_needs_what_a_mac_has_not(self):
        for script in SCRIPTS:
            for number, line in lines_of(script):
                for pattern in MISSING:
                    with self.subTest(place=f"{script.name}:{number}", pattern=pattern):
                        self.assertNotRegex(line, pattern)

    def test_bash_is_looked_for_and_problems_end_a_script(self):
        for script in SCRIPTS:
            with self.subTest(script=script.name):
                self.assertTrue(script.read_text(encoding="utf-8").startswith("#!/usr/bin/env bash\n"))
                self.assertIn("set -euo pipefail", [line for _, line in lines_of(script)])


# What gives a program another home, and what macOS's own calls go by instead.
SETS_HOME = re.compile(r'(\bexport HOME=|setenv\("HOME"|pair\("HOME"|"HOME": )')


class Homes(unittest.TestCase):
    def test_who_moves_the_home_moves_the_one_that_macos_asks_for(self):
        found = []
        for folder in ("scripts", "tests", "tools", "bench"):
            for path in sorted((ROOT / folder).rglob("*")):
                if path == Path(__file__).resolve() or not path.is_file() or path.suffix in (".pyc", ".png"):
                    continue
                text = path.read_text(encoding="utf-8", errors="replace")
                if SETS_HOME.search(text):
                    found.append(path.name)
                    with self.subTest(path=path):
                        self.assertRegex(text, r'CFFIXED_USER_HOME[="]')
        self.assertLessEqual({"run", "TemporaryHome.cpp", "ProgramTest.cpp", "screen.py", "packaging_test.py"}, set(found))


if __name__ == "__main__":
    unittest.main()
