#!/usr/bin/env python3
"""The reference package replaces an earlier version: what becomes of that version's documentation.

usage: documentation_test.py BUILD_WINDOWS_DIR [unittest arguments]

The Wine prefix is the folder wine-documentation_test beside the build folder; each test removes what it installed.
"""

import shutil
import sys
import unittest

sys.dont_write_bytecode = True
from case import prepare

FOLDER = "documentation_test"
KEY = r"HKLM\Software\Korvex\QVSeries"
VERSION = rf"{KEY}\CurrentVersion"
COMPONENTS = rf"{VERSION}\Components"
LANGUAGES = ["de_de", "en_us", "es_es", "fr_fr", "it_it", "ja_jp", "ko_kr", "pt_br", "zh_cn", "zh_tw"]
BOOKS = {"chm": ["zqvadmin", "zqvmsgs"], "pdf": ["zqvadmin", "zqvprog"], "htm": ["index", "toc", "zqvmsgs"]}


class Upgrade(unittest.TestCase):
    """An earlier version with documentation in German, French and Korean, in C:\\documentation_test\\old and \\data."""

    # What no list names.
    others = ["data/docindex", "old/doc/chm/de_de/notes.txt", "old/doc/htm", "old/doc/pdf", "old/readme.txt"]

    def setUp(self):
        self.folder = machine.fresh_folder(FOLDER)
        self.addCleanup(shutil.rmtree, self.folder)
        self.addCleanup(machine.wine, "wine", "reg", "delete", KEY, "/f", "/reg:32")
        self.value(VERSION, "VRMF", "5.3.0.2")
        self.value(VERSION, "PgmFolder", rf"C:\{FOLDER}\old")
        self.value(VERSION, "DatFolder", rf"C:\{FOLDER}\data")
        for name in ["Server", " ", *(rf"Additional Languages\{language}" for language in ("en_us", "fr_fr", "ko_kr"))]:
            self.value(COMPONENTS, name, "installed")
        for language in ("de_de", "fr_fr", "ko_kr"):
            for kind, books in BOOKS.items():
                for book in books:
                    self.place(f"old/doc/{kind}/{language}/{book}.{kind}")
            self.place(f"data/docindex/{language}.idx")
        self.place("old/doc/chm/de_de/notes.txt")
        self.place("old/readme.txt")

    def value(self, key, name, text):
        status = machine.wine("wine", "reg", "add", key, "/v", name, "/d", text, "/f", "/reg:32")
        self.assertEqual(status, 0)

    def values(self, names):
        """Those of the names that the key of the components still has."""
        query = ("wine", "reg", "query", COMPONENTS, "/reg:32", "/v")
        return [name for name in names if machine.wine(*query, name) == 0]

    def place(self, name):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.touch()

    def left(self):
        """All files and empty folders of the earlier version."""
        paths = [path for top in ("old", "data") for path in (self.folder / top).rglob("*")]
        return sorted(str(path.relative_to(self.folder)) for path in paths if path.is_file() or not any(path.iterdir()))

    def upgrade(self, *options):
        """Installs over the earlier version and takes the product away again; gives the lines of the log."""
        own = [rf"ZQVTEMP=C:\{FOLDER}", "QVNOSTOP=1"]
        run = machine.msiexec("/i", package.path, FOLDER, *own, *options)
        machine.wine("wine", "msiexec", "/x", package.path, "/qn", *own)
        self.assertEqual(run.status, 0)
        self.assertEqual(machine.product_files(), {})
        decided = [f"iwiDeleteOld{language.capitalize()}" for language in LANGUAGES]
        ended = [(outcome.action, outcome.value, outcome.results) for outcome in run.outcomes()]
        self.assertEqual([end for end in ended if end[0] in decided], [(action, 1, [0]) for action in decided])
        lines = [line for line in run.log.splitlines() if ">>" not in line]  # not what the merging repeats
        self.assertEqual([line for line in lines if "iwiDeleteOld" in line and "***" in line], [])
        self.assertFalse(list(self.folder.glob("zqvu*")))
        return "\n".join(lines)

    def expect_decisions(self, log, kept):
        for language in LANGUAGES:
            name = "ZQVDELOLD" + language.replace("_", "").upper()
            self.assertIn(f"Property '{name}' value set to '{'' if language in kept else '1'}'", log)
            self.assertEqual(f"Property(S): {name} = 1" in log, language not in kept)
        # The library's own strings hold one blank for each of ten languages of the user interface.
        stacked = log.count(r"StackDeleteRegistryValue 'Software\Korvex\QVSeries\CurrentVersion\Components' ' '")
        self.assertEqual(stacked, 10 * (len(LANGUAGES) - len(kept)))

    def test_all_documentation_goes(self):
        self.expect_decisions(self.upgrade(), [])
        self.assertEqual(self.left(), self.others)
        names = ["Server", " ", *(rf"Additional Languages\{language}" for language in LANGUAGES)]
        self.assertEqual(self.values(names), ["Server"])

    def test_what_a_new_feature_replaces_stays(self):
        features = ["docs_fr_fr_eclipse", "docs_ko_kr_eclipse"]
        log = self.upgrade(f"ADDLOCAL=Base,{','.join(features)}")
        self.expect_decisions(log, ["fr_fr", "ko_kr"])
        kept = [rf"Additional Languages\{language}" for language in ("fr_fr", "ko_kr")]
        self.assertEqual(self.values(["Server", " ", r"Additional Languages\en_us", *kept]), ["Server", *kept])
        helps = [f"old/doc/chm/{language}/{book}.chm" for language in ("fr_fr", "ko_kr") for book in BOOKS["chm"]]
        self.assertEqual(self.left(), sorted([*self.others, *helps]))


if __name__ == "__main__":
    build, package, machine = prepare(__doc__)
    unittest.main()
