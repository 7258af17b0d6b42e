#!/usr/bin/env python3
"""The converter of message tables: what it writes, as the resource compiler understands it, and what it refuses. And the
message tables themselves: that all languages and the library's code agree."""

import re
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
CATALOGUE = ROOT / "catalogue"
SOURCES = ROOT / "install/pc/winnt/msi"
CONVERTER = CATALOGUE / "message_table.py"
sys.dont_write_bytecode = True
sys.path.insert(0, str(CATALOGUE))
from message_table import CODE_PAGES, read_table

# What the library and the installer fill in, by number, as inserts() gives it; the other texts are shown as they are.
FILLED = {
    **{number: (["[1]"], []) for number in (1017, 1018, 1019, 1020)},
    **{number: (["%1"], []) for number in (1121, 2034, 2110, 2125, 2126, 2127, 2128, 2129, 2131)},
    **{number: ([], ["%s"]) for number in (2001, 2002, 2003, 2004, 2005)},
    **{1016: (["[1]", "[2]"], []), 2035: ([], ["%d"]), 2100: (["%1", "%2"], []), 2124: (["%1", "%2"], [])},
}
NAMES = {406, 613, 2027}  # texts that are names, which a translation may keep


def strings(resources):
    """The texts by number in a file of compiled resources that holds string tables only."""
    found, at = {}, 0
    while at < len(resources):
        size, header = struct.unpack_from("<II", resources, at)
        kind, name = struct.unpack_from("<xxHxxH", resources, at + 8)
        data = resources[at + header : at + header + size]
        at += (header + size + 3) & ~3
        for number in range((name - 1) * 16, name * 16) if kind == 6 else ():
            length = 2 * struct.unpack_from("<H", data)[0]
            if length:
                found[number] = data[2 : 2 + length].decode("utf-16-le")
            data = data[2 + length :]
    return found


def inserts(text):
    """The inserts that may move, sorted, and those of printf, in order."""
    return sorted(re.findall(r"%\d!?|\[.*?\]", text)), re.findall(r"%(?!\d).?", text)


class MessageTable(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.table, self.script, self.resources = (Path(folder.name) / name for name in ("table", "a.rc", "a.res"))

    def convert(self, language, table):
        self.table.write_bytes(table)
        command = [sys.executable, CONVERTER, str(language), self.table, self.script]
        return subprocess.run(command, capture_output=True, text=True)

    def test_texts_survive(self):
        table = "\ufeff; comment\r\n\n15\tlast \"quoted\" %1\r\n16  日本1f\\n\\\\n \n65535 [1] ;x".encode()
        self.assertEqual(self.convert(1041, table).stderr, "")
        windres = ["i686-w64-mingw32-windres", "-O", "res", self.script, self.resources]
        subprocess.run(windres, check=True)
        expected = {15: 'last "quoted" %1', 16: "日本1f\n\\n", 65535: "[1] ;x"}
        self.assertEqual(strings(self.resources.read_bytes()), expected)

    def test_wrong_lines_are_named(self):
        long = b"x" * 516
        table = b"1 a\n1 b\nxyz\n4 \n5 \\q\n70000 a\n0 a\n6 \xff\n7 \xe6\x97\xa5\n8 a\tb\n9 " + long + b"\n10 " + long[1:]
        run = self.convert(1033, table)
        self.assertEqual(run.returncode, 1)
        self.assertFalse(self.script.exists())
        self.assertEqual([line.split(":")[1] for line in run.stderr.splitlines()], [str(n) for n in range(2, 12)])
        self.assertNotEqual(self.convert(1033, b"; nothing\n").returncode, 0)
        self.assertNotEqual(self.convert(7, b"1 a\n").returncode, 0)


class Catalogue(unittest.TestCase):
    def test_languages_agree(self):
        rules = (CATALOGUE / "CMakeLists.txt").read_text()
        libraries = re.findall(r"^add_message_library\((\w+) (\w+) (\d+)\)$", rules, re.MULTILINE)
        self.assertEqual({folder for _, folder, _ in libraries}, {path.parent.name for path in CATALOGUE.glob("*/*.txt")})
        # What the library knows of the languages that are not English: the first of its identifiers, and the letter.
        known = (SOURCES / "init/primary/language.cpp").read_text()
        rows = re.findall(r"{{0x(\w+).*?},\s*\"(\w+)\",\s*'([^a])'}", known, re.DOTALL)
        expected = [(f"zqvirc{letter}n", code.lower(), str(int(number, 16))) for number, code, letter in rows]
        expected += [("zqvircan", "en_us", "1033"), ("zqviwiln", "en_us", "0")]
        self.assertCountEqual(libraries, expected)
        header = (SOURCES / "runtime/message.h").read_text()
        used = {int(number) for number in re.findall(r"^constexpr UINT k\w+ = (\d+);", header, re.MULTILINE)}
        self.assertGreater(len(used), 9)
        english, _ = read_table(CATALOGUE / "en_us/messages.txt", CODE_PAGES[1033])
        self.assertLessEqual(used, english.keys())
        for _, folder, language in libraries:
            texts, wrong = read_table(CATALOGUE / folder / "messages.txt", CODE_PAGES[int(language)])
            self.assertEqual(wrong, [])
            self.assertEqual(texts.keys(), english.keys(), folder)
            for number, text in texts.items():
                with self.subTest(folder=folder, number=number):
                    self.assertEqual(inserts(text), FILLED.get(number, ([], [])))
                    if folder != "en_us" and number not in NAMES:
                        self.assertNotEqual(text, english[number], "is not translated")


if __name__ == "__main__":
    unittest.main()
