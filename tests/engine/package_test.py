#!/usr/bin/env python3
"""Checks that the package and the library's sources agree where both name the same things.

usage: package_test.py BUILD_WINDOWS_DIR [unittest arguments]
"""

import re
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
SOURCES = ROOT / "install/pc/winnt/msi"
sys.path.insert(0, str(ROOT / "tools"))
from installation import Package, read_text


class Agreement(unittest.TestCase):
    def test_features(self):
        table = re.findall(r"^FEATURE\((\w+)\)$", (SOURCES / "features/feature_table.inc").read_text(), re.MULTILINE)
        self.assertTrue(table)
        self.assertCountEqual(table, [row["Feature"] for row in package.table("Feature")])

    def test_actions(self):
        table = re.findall(r"^ACTION(?:_AS)?\((\w+),", (SOURCES / "zqviwicn/actions.inc").read_text(), re.MULTILINE)
        rows = {row["Target"] for row in package.table("CustomAction") if row["Source"] == "zqviwicn"}
        self.assertEqual(set(table), rows)

    def test_the_sample_response_file_explains_every_keyword(self):
        written = re.findall('"([A-Z]+)"', (SOURCES / "features/answers/response_writer.cpp").read_text())
        passed = (SOURCES / "runtime/actions/deferred_data.cpp").read_text().split("kResponseNames[] = {")[1].split("}")[0]
        own = re.compile("ZQV|SAVEINI")  # properties that are no answers
        known = {name for name in [*written, *re.findall('"([A-Z]+)"', passed)] if not own.match(name)}
        self.assertGreater(len(known), 15)
        sample = read_text(build / "sample.ini")
        self.assertEqual(set(re.findall(r"^;?([A-Z]+)=", sample, re.MULTILINE)), known)
        self.assertEqual(re.findall(r"^\[(.*)\]", sample, re.MULTILINE), ["Response"])


if __name__ == "__main__":
    build = Path(sys.argv.pop(1)).resolve()
    package = Package(build / "vantrelqv.msi")
    unittest.main()
