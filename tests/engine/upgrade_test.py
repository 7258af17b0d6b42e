#!/usr/bin/env python3
"""The reference package replaces an earlier version: what becomes of that version, of its settings and of its queue
managers.

usage: upgrade_test.py BUILD_WINDOWS_DIR [unittest arguments]

The Wine prefix is the folder wine-upgrade_test beside the build folder; each test removes what it installed.
"""

import shutil
import sys
import unittest

sys.dont_write_bytecode = True
from case import message, prepare, texts
from installation import FAILED, read_text
from running_product import RunningProduct

FOLDER = "upgrade_test"
HOME = rf"C:\{FOLDER}"
KEY = r"HKLM\Software\Korvex\QVSeries"
VERSION = rf"{KEY}\CurrentVersion"
COMPONENTS = rf"{VERSION}\Components"
LANGUAGES = ["de_de", "en_us", "es_es", "fr_fr", "it_it", "ja_jp", "ko_kr", "pt_br", "zh_cn", "zh_tw"]
BOOKS = {"chm": ["zqvadmin", "zqvmsgs"], "pdf": ["zqvadmin", "zqvprog"], "htm": ["index", "toc", "zqvmsgs"]}
SERVER = ["bin/zqvadmin.exe", "bin/zqvsetup.one", "bin/zqvsetup.two", "server/samples/zqvstart.cmd"]
GATEWAY = ["gateway/zqvgate.exe", "gateway/zqvgate.dll"]
SETTINGS = {"qvseries.ini": "[earlier]", "own settings.ini": "[own]", "locked.ini": "[locked]"}
MANAGERS = ["QM.ONE", "QM TWO"]
AGREED = "REMOVEFEATURES=yes"


class Upgrade(unittest.TestCase):
    """An earlier version in C:\\upgrade_test\\old and \\data: a server, the Internet gateway, documentation in German,
    French and Korean, settings and two queue managers."""

    def setUp(self):
        self.folder = machine.fresh_folder(FOLDER)
        self.addCleanup(shutil.rmtree, self.folder)
        self.addCleanup(machine.wine, "wine", "reg", "delete", KEY, "/f", "/reg:32")
        self.addCleanup(self.remove)
        for name, text in {"VRMF": "5.3.0.2", "PgmFolder": rf"{HOME}\old", "DatFolder": rf"{HOME}\data"}.items():
            self.value(VERSION, name, text)
        languages = [rf"Additional Languages\{language}" for language in ("en_us", "fr_fr", "ko_kr")]
        for name in ["Server", "Internet Gateway", " ", *languages]:
            self.value(COMPONENTS, name, "installed")
        for language in ("de_de", "fr_fr", "ko_kr"):
            for kind, books in BOOKS.items():
                for book in books:
                    self.place(f"old/doc/{kind}/{language}/{book}.{kind}")
            self.place(f"data/docindex/{language}.idx")
        for name in (*SERVER, *GATEWAY, "bin/private.dll", "bin/sub/deep.dll", "readme.txt"):
            self.place(f"old/{name}")
        (self.folder / "old/bin/private.dll").chmod(0o444)
        self.place("data/zqvsrv5.cfg")
        for name, text in SETTINGS.items():
            self.place(f"data/{name}", text)
        (self.folder / "data/locked.ini").chmod(0o444)
        self.place("data/zqvqmgrs.txt", "\n".join(MANAGERS))
        for name in MANAGERS:
            self.place(f"data/qmgrs/{name}/qm.ini", f"[{name}]")
            self.place(f"data/qmgrs/{name}/log/active", name)

    def value(self, key, name, text):
        status = machine.wine("wine", "reg", "add", key, "/v", name, "/d", text, "/f", "/reg:32")
        self.assertEqual(status, 0)

    def registry(self):
        return machine.read("wine", "reg", "query", KEY, "/s", "/reg:32")

    def place(self, name, text=""):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def left(self, *tops):
        """All files, with their texts, and empty folders below some folders."""
        paths = [path for top in tops for path in (self.folder / top).rglob("*")]
        ends = [path for path in paths if path.is_file() or not any(path.iterdir())]
        return {str(path.relative_to(self.folder)): path.read_text() if path.is_file() else None for path in ends}

    def run_package(self, verb, *options):
        own = [f"ZQVTEMP={HOME}", "QVNOSTOP=1", rf"INSTALLTRACE={HOME}\trace.log"]
        run = machine.msiexec(verb, package.path, FOLDER, *own, *options)
        return run, texts(read_text(self.folder / "trace.log").splitlines())

    def upgrade(self, *options):
        """Installs over the earlier version; gives the lines of the library's log."""
        run, lines = self.run_package("/i", *options)
        self.assertEqual(run.status, 0)
        self.assertEqual([line for line in lines if ": ***" in line], [])
        self.assertEqual([line for line in lines if "Returning with rc" in line and not line.endswith(" 0")], [])
        self.assertFalse(list(self.folder.glob("zqvu*")))
        return lines

    def remove(self, *options):
        if not machine.product_files():
            return []
        run, lines = self.run_package("/x", *options)
        self.assertEqual(run.status, 0)
        return lines

    def test_what_is_old_goes_and_what_is_the_users_comes_along(self):
        held = RunningProduct(machine, f"{FOLDER}/old/bin", f"{FOLDER}/none")
        self.addCleanup(held.end)
        shutil.copy(build / "package/parts/stand_in.exe", self.folder / "old/bin/held.exe")
        held.start("held.exe")
        before = self.left("data")
        self.upgrade()
        # Wine leaves what is read-only, and leaves what is in use for good.
        left = {str(path.relative_to(self.folder)) for path in (self.folder / "old").rglob("*")}
        self.assertEqual(left, {"old/bin", "old/bin/held.exe", "old/bin/private.dll", "old/readme.txt"})
        gone = {"data/zqvsrv5.cfg", *(f"data/docindex/{language}.idx" for language in ("de_de", "fr_fr", "ko_kr"))}
        kept = {name: text for name, text in before.items() if name not in gone}
        self.assertEqual(self.left("data"), kept | {"data/docindex": None})
        new = machine.drive / "ProgramData/Korvex/Vantrel QV"
        self.assertEqual({name: (new / name).read_text() for name in SETTINGS}, SETTINGS)
        self.assertRegex(self.registry(), r"MigratedFrom +REG_SZ +5\.3\.0\.2")
        self.assertNotRegex(self.registry(), "Gateway|Languages")
        self.assertFalse(list(self.folder.glob("zqvm*.txt")))
        self.remove()
        self.assertNotIn("MigratedFrom", self.registry())

    def test_what_a_new_feature_replaces_stays(self):
        features = ["docs_fr_fr_eclipse", "docs_ko_kr_eclipse"]
        lines = self.upgrade(AGREED, f"ADDLOCAL=Base,{','.join(features)}", rf"PGMFOLDER={HOME}\old")
        for language in LANGUAGES:
            name = "ZQVDELOLD" + language.replace("_", "").upper()
            decided = f"Property '{name}' value set to '{'' if language in ('fr_fr', 'ko_kr') else '1'}'"
            self.assertTrue(any(line.endswith(decided) for line in lines), name)
        self.assertRegex(self.registry(), r"(?s)fr_fr.*ko_kr")
        self.assertNotRegex(self.registry(), "Server|Gateway|en_us")
        self.assertIn("iwiDeletePrevious: Previous version is in the same folder", lines)
        helps = [f"old/doc/chm/{language}/{book}.chm" for language in ("fr_fr", "ko_kr") for book in BOOKS["chm"]]
        self.assertLessEqual({*helps, "old/bin/private.dll", "old/doc/htm", "old/doc/pdf"}, set(self.left("old")))
        self.assertFalse((self.folder / "old/doc/chm/de_de").exists())

    def test_queue_managers_stay_until_the_user_lets_them_go(self):
        own = rf"DATFOLDER={HOME}\data"
        before = self.left("data")
        self.upgrade(own)
        after = self.left("data")
        users = {name: text for name, text in before.items() if "qmgrs" in name or name.endswith(".ini")}
        self.assertLessEqual(users.items(), after.items())
        saved = {name.replace("data/", "zqvsave/", 1): text for name, text in users.items() if "active" not in name}
        named = ("qmgrs", "qvseries.ini")
        saved = {name: text for name, text in saved.items() if any(part in name for part in named)}
        self.assertEqual({name.replace("QVSeries", "qvseries"): text for name, text in self.left("zqvsave").items()}, saved)
        self.assertIn("iwiStackDeleteQMgrs: Queue-manager data is kept", self.remove("KEEPQMDATA=keep"))
        self.assertLessEqual({name: text for name, text in users.items() if "qmgrs" in name}.items(), self.left("data").items())
        self.run_package("/i", own)
        self.remove("KEEPQMDATA=delete")
        self.assertEqual([name for name in self.left("data") if "qmgrs" in name], [])

    def test_a_failure_behind_the_migration_undoes_it(self):
        # Wine does not undo its own removals of files and of registry values: what they name is left out.
        self.value(VERSION, "MigratedFrom", "4.0")
        self.place("new/own settings.ini", "the user's")
        self.place("zqvm0001.txt", "own settings.ini\n")  # the list of an earlier run
        kept = {name: text for name, text in self.left("data").items() if "idx" not in name and "cfg" not in name}
        run, lines = self.run_package("/i", rf"DATFOLDER={HOME}\new", "QVFAILDEFERRED=1")
        self.assertEqual(run.status, FAILED)
        self.assertTrue(any(line.endswith(r"Deleted file: 'C:\upgrade_test\new\locked.ini'") for line in lines))
        self.assertEqual(self.left("new"), {"new/own settings.ini": "the user's"})
        self.assertEqual({name: text for name, text in self.left("data").items() if name in kept}, kept)
        self.assertRegex(self.registry(), r"(?m)MigratedFrom +REG_SZ +4\.0$")
        self.assertFalse(list(self.folder.glob("zqvm*.txt")))

    def test_features_are_lost_with_consent_only(self):
        before = self.left("old", "data")
        run, lines = self.run_package("/i", "ADDLOCAL=Base")
        self.assertEqual(run.status, FAILED)
        self.assertEqual(self.left("old", "data"), before)
        said = message("2110").replace("%1", "Server")
        self.assertIn(f"iwiTestLosingFeatures: QVCA iwiTestLosingFeatures MB error: {said}", lines)
        self.assertIn("iwiTestLosingFeatures: ***Features would be lost: 'Server'", lines)
        self.upgrade("ADDLOCAL=Base,Explorer", AGREED)
        # What is installed may be changed, whatever is recorded.
        self.value(COMPONENTS, "Server", "installed")
        for options in (["REINSTALL=ALL", "REINSTALLMODE=amus"], ["ADDLOCAL=Toolkit"], ["REMOVE=Explorer"]):
            run, _ = self.run_package("/i", *options)
            self.assertEqual(run.status, 0)


if __name__ == "__main__":
    build, package, machine = prepare(__doc__)
    unittest.main()
