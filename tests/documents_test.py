#!/usr/bin/env python3
"""Checks that the documents and the code name the same things: every exported action, property, message library and
failure line of the code is in the documents, and they name none that the code does not have.

usage: documents_test.py SOURCE_ROOT
"""

import re
import sys
import unittest
from pathlib import Path

root = Path(sys.argv.pop(1))
docs = {path.name: path.read_text(encoding="utf-8") for path in (root / "docs").glob("*.md")}
code = "\n".join(path.read_text(encoding="utf-8") for path in (root / "install").rglob("*.*") if path.suffix != ".rc")
literals = re.findall(r'"((?:[^"\\\n]|\\.)*)"', code)

# Records' keys in tables that look like properties' names.
RECORD_KEYS = {"ZQVRECORD", "ZQVREGISTRY"}
FAILURE = re.compile(r"\*\*\*[^`]+")


def spans(text):
    """What the text shows as code: in one line, between single backquotes."""
    return set(re.findall(r"(?<!`)`([^`\n]+)`(?!`)", text))


def words(pattern, texts):
    return {word for text in texts for word in re.findall(pattern, text)}


def full(pattern, texts):
    return {text for text in texts if re.fullmatch(pattern, text)}


class Documents(unittest.TestCase):
    def expect_same(self, in_code, in_page, named_anywhere=frozenset()):
        self.assertTrue(in_code, "nothing found in the code")
        self.assertEqual(in_code - in_page, set(), "in the code, but not in its document")
        self.assertEqual(named_anywhere - in_code, set(), "in a document, but not in the code")

    def test_actions(self):
        table = (root / "install/pc/winnt/msi/zqviwicn/actions.inc").read_text(encoding="utf-8")
        actions = set(re.findall(r"^ACTION(?:_AS)?\((\w+),", table, re.MULTILINE))
        self.expect_same(actions, full(r"\w+", spans(docs["actions.md"])))
        # Rows of the package's table may have other names, and log lines may name routines.
        rows = (root / "package/tables/CustomAction.idt").read_text(encoding="utf-8")
        known = actions | words(r"\bii?wi\w+|\biii\w+", [rows, *literals])
        self.assertEqual(words(r"\biwi\w+|\biii\w+", docs.values()) - known, set(), "in a document, but not in the code")

    def test_properties(self):
        own = full(r"ZQV[A-Z][A-Z0-9]+", literals) - RECORD_KEYS
        self.expect_same(own, spans(docs["properties.md"]), words(r"\bZQV[A-Z][A-Z0-9]+\b", docs.values()))
        others = set(re.findall(r'\b(?:[GS]et\w*Property\w*|SetSwitch)\("(\w+)"', code))
        self.expect_same(others, spans(docs["properties.md"]))

    def test_message_libraries(self):
        made = (root / "catalogue/CMakeLists.txt").read_text(encoding="utf-8")
        libraries = {f"{name}.dll" for name in re.findall(r"^add_message_library\((\w+)", made, re.MULTILINE)}
        named = words(r"\bzqvirc\wn\.dll|\bzqviwiln\.dll", docs.values())
        self.expect_same(libraries, spans(docs["package.md"]), named)

    def test_failure_lines(self):
        self.expect_same(full(FAILURE, literals), spans(docs["logs.md"]), full(FAILURE, spans(docs["logs.md"])))


if __name__ == "__main__":
    unittest.main()
