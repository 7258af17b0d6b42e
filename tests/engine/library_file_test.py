#!/usr/bin/env python3
"""Looks at the built library as a file: size, exports, imports, sections, version.

usage: library_file_test.py LIBRARY OBJDUMP
"""

import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2] / "install/pc/winnt/msi"
SYSTEM_LIBRARIES = {"advapi32.dll", "kernel32.dll", "msi.dll", "msvcrt.dll", "shell32.dll", "user32.dll"}
TABLE = (SOURCES / "zqviwicn/actions.inc").read_text()
ACTIONS = set(re.findall(r"^ACTION(?:_AS)?\((\w+),", TABLE, re.MULTILINE))
# What the run-time library takes, and what an action has taken on average with all that it uses: more is something that
# nobody meant to link.
RUN_TIME, EXPORT = 88 * 1024, 4.4 * 1024


class LibraryFile(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.headers = subprocess.run([objdump, "-x", library], check=True, capture_output=True, text=True).stdout

    def test_size(self):
        size = library.stat().st_size
        print(f"{library.name}: {size} bytes", file=sys.stderr)
        self.assertLessEqual(size, RUN_TIME + EXPORT * len(ACTIONS))

    def test_exports_are_the_table_of_actions(self):
        exported = re.search(r"\[Ordinal/Name Pointer\] Table.*?\n(.*?)\n\n", self.headers, re.DOTALL)[1]
        self.assertEqual(set(re.findall(r"\[ *\d+\] (?:\+base\[ *\d+\]\s+\w+ )?(\S+)$", exported, re.MULTILINE)), ACTIONS)

    def test_only_system_libraries_are_imported_and_the_installers_by_ordinal(self):
        imports = re.split(r"DLL Name: ", self.headers)[1:]
        names = {part.split("\n", 1)[0].lower() for part in imports}
        self.assertLessEqual(names, SYSTEM_LIBRARIES)
        installer = next(part for part in imports if part.lower().startswith("msi.dll")).split("\n\n")[0]
        ordinals = set(map(int, re.findall(r"^\s+[0-9a-f]+\s+(\d+)\s+<none>", installer, re.MULTILINE)))
        known = set(map(int, re.findall(r"@(\d+) NONAME", (SOURCES / "platform/msi.def").read_text())))
        self.assertTrue(ordinals and ordinals <= known, ordinals)
        self.assertNotIn("Msi", installer.split("\n", 1)[1])

    def test_the_cancel_flag_lies_in_a_shared_writable_section(self):
        section = re.search(r"\.shared\s+([0-9a-f]+) .*\n\s+(.*)", self.headers)
        self.assertEqual(int(section[1], 16), 4)
        self.assertIn("SHARED", section[2])
        self.assertNotIn("READONLY", section[2])

    def test_a_second_build_elsewhere_is_the_same_bytes(self):
        """Every twentieth file is compiled once more, from a copy of the sources, and all is linked once more."""
        build = library.resolve().parent
        call = ["ninja", "-C", build, "-t", "commands", library.name]
        *steps, link = subprocess.run(call, check=True, capture_output=True, text=True).stdout.splitlines()
        compilations = [step for step in steps if f" -c {SOURCES}/" in step][::20]
        self.assertGreater(len(compilations), 5)
        with tempfile.TemporaryDirectory() as folder:
            sources = shutil.copytree(SOURCES, f"{folder}/copy")
            Path(folder, "install").symlink_to(build / "install")
            for number, step in enumerate(compilations):
                made, again = re.search(r" -o (\S+\.obj) ", step)[1], f"{folder}/{number}.obj"
                step = step.replace(str(SOURCES), sources).replace(made, again)
                subprocess.run(step, shell=True, check=True, cwd=build)
                link = link.replace(f" {made} ", f" {again} ")
            link = re.sub(r"--out-implib,\S+", "--out-implib,import.a", link)
            subprocess.run(link, shell=True, check=True, cwd=folder)
            self.assertTrue(Path(folder, library.name).read_bytes() == library.read_bytes())
        # Both may be of the same second.
        header = struct.unpack_from("<I", library.read_bytes(), 0x3C)[0]
        self.assertEqual(struct.unpack_from("<I", library.read_bytes(), header + 8)[0], 0)
        self.assertRegex(self.headers, r"Time/Date stamp\s+0*0\b")  # of the exports
        # And a file that is not compiled again may name its folder.
        for place in (SOURCES, build):
            self.assertNotIn(str(place).encode(), library.read_bytes())

    def test_it_may_be_loaded_anywhere_and_its_data_is_not_run(self):
        self.assertEqual(int(re.search(r"^DllCharacteristics\s+(\w+)", self.headers, re.MULTILINE)[1], 16), 0x140)
        relocations = re.search(r"^Entry 5 \w+ (\w+) Base Relocation", self.headers, re.MULTILINE)[1]
        self.assertGreater(int(relocations, 16), 0)

    def test_version_information(self):
        content = library.read_bytes()
        for text in ("zqviwicn.dll", "Vantrel QV", "Korvex", "6.0.2.0"):
            self.assertIn(text.encode("utf-16-le"), content)


if __name__ == "__main__":
    objdump = sys.argv.pop()
    library = Path(sys.argv.pop())
    unittest.main()
