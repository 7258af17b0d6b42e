#!/usr/bin/env python3
"""The reference package replaces an earlier version: what becomes of that version, of its settings and of its queue
managers."""

import shutil
import sys
import unittest

sys.dont_write_bytecode = True
from case import FOLDER, KEY, TEMP, TRACE, VERSION, Case, build, machine, message
from installation import FAILED
from running_product import RunningProduct

COMPONENTS = rf"{VERSION}\Components"
OLD_LANGUAGES = ["de_de", "fr_fr", "ko_kr"]
BOOKS = {"chm": ["zqvadmin", "zqvmsgs"], "pdf": ["zqvadmin", "zqvprog"], "htm": ["index", "toc", "zqvmsgs"]}
LISTED = ["bin/zqvadmin.exe", "bin/zqvsetup.one", "bin/zqvsetup.two", "server/samples/zqvstart.cmd"]
LISTED += ["gateway/zqvgate.exe", "gateway/zqvgate.dll"]
SETTINGS = {"qvseries.ini": "[earlier]", "own settings.ini": "[own]", "locked.ini": "[locked]"}
MANAGERS = ["QM.ONE", "QM TWO"]
AGREED = "REMOVEFEATURES=yes"


class Upgrade(Case):
    """An earlier version in the folders old and data: a server, the Internet gateway, documentation in German, French and
    Korean, settings and two queue managers."""

    def setUp(self):
        super().setUp()
        for name, text in {"VRMF": "5.3.0.2", "PgmFolder": rf"{TEMP}\old", "DatFolder": rf"{TEMP}\data"}.items():
            self.value(VERSION, name, text)
        languages = [rf"Additional Languages\{language}" for language in ("en_us", "fr_fr", "ko_kr")]
        for name in ["Server", "Internet Gateway", " ", *languages]:
            self.value(COMPONENTS, name, "installed")
        for language in OLD_LANGUAGES:
            for kind, books in BOOKS.items():
                self.place(*(f"old/doc/{kind}/{language}/{book}.{kind}" for book in books))
        self.place(*(f"old/{name}" for name in (*LISTED, "bin/private.dll", "bin/sub/deep.dll", "readme.txt")))
        (self.folder / "old/bin/link").symlink_to("../../data")
        self.place("data/zqvsrv5.cfg", *(f"data/docindex/{language}.idx" for language in OLD_LANGUAGES))
        self.write({f"data/{name}": text for name, text in SETTINGS.items()})
        self.write({"data/zqvqmgrs.txt": "\n".join(MANAGERS)})
        for name in MANAGERS:
            self.write({f"data/qmgrs/{name}/qm.ini": f"[{name}]", f"data/qmgrs/{name}/log/active": name})
        for name in ("old/bin/private.dll", "data/locked.ini"):
            (self.folder / name).chmod(0o444)

    def clear(self):
        """What has been migrated is the user's, and no removal takes it away."""
        for name in ("own settings.ini", "locked.ini"):
            (machine.drive / "ProgramData/Korvex/Vantrel QV" / name).unlink(missing_ok=True)
        super().clear()

    def write(self, texts):
        self.place(*texts)
        for name, text in texts.items():
            (self.folder / name).write_text(text)

    def recorded(self):
        return machine.read("wine", "reg", "query", KEY, "/s", "/reg:32")

    def left(self, *tops):
        """All files, with their texts, and empty folders below some folders."""
        paths = [path for top in tops for path in (self.folder / top).rglob("*")]
        ends = [path for path in paths if path.is_file() or not any(path.iterdir())]
        texts = [path.read_text(errors="replace") if path.is_file() else None for path in ends]
        return {str(path.relative_to(self.folder)): text for path, text in zip(ends, texts)}

    def upgrade(self, *options):
        """Installs over the earlier version; gives the lines of the library's log."""
        self.install(*options)
        lines = self.texts()
        self.assertEqual([line for line in lines if ": ***" in line], [])
        self.assertEqual([line for line in lines if "Returning with rc" in line and not line.endswith(" 0")], [])
        self.assertEqual([path.name for path in self.folder.glob("zqv*")], [TRACE])
        return lines

    def test_what_is_old_goes_and_what_is_the_users_comes_along(self):
        held = RunningProduct(machine, f"{FOLDER}/old/bin", f"{FOLDER}/none")
        self.addCleanup(held.end)
        shutil.copy(build / "package/parts/stand_in.exe", self.folder / "old/bin/held.exe")
        held.start("held.exe")
        before = self.left("data")
        self.upgrade()
        # Wine leaves what is read-only, links, and for good what is in use.
        old = self.folder / "old"
        left = {str(path.relative_to(old)) for path in old.rglob("*")}
        self.assertEqual(left, {"bin", "bin/held.exe", "bin/link", "bin/private.dll", "readme.txt"})
        gone = {"data/zqvsrv5.cfg", *(f"data/docindex/{language}.idx" for language in OLD_LANGUAGES)}
        kept = {name: text for name, text in before.items() if name not in gone}
        self.assertEqual(self.left("data"), kept | {"data/docindex": None})
        new = machine.drive / "ProgramData/Korvex/Vantrel QV"
        self.assertEqual({name: (new / name).read_text() for name in SETTINGS}, SETTINGS)
        self.assertRegex(self.recorded(), r"MigratedFrom +REG_SZ +5\.3\.0\.2")
        self.assertNotRegex(self.recorded(), "Gateway|Languages")
        self.remove()
        self.assertNotIn("MigratedFrom", self.recorded())

    def test_queue_managers_stay_until_the_user_lets_them_go(self):
        own = rf"DATFOLDER={TEMP}\data"
        before = self.left("data")
        self.upgrade(own)
        users = {name: text for name, text in before.items() if "qmgrs" in name or name.endswith(".ini")}
        self.assertLessEqual(users.items(), self.left("data").items())
        # What was saved for the support engineer has gone with the success.
        saving = [line for line in self.texts() if line.startswith("iwiSaveQmConfigExec: Copying '")]
        self.assertEqual(len(saving), 2 + len(MANAGERS))
        self.remove("KEEPQMDATA=keep")
        self.assertIn("iwiStackDeleteQMgrs: Queue-manager data is kept", self.texts())
        managers = {name: text for name, text in users.items() if "qmgrs" in name}
        self.assertLessEqual(managers.items(), self.left("data").items())
        self.install(own)
        self.remove("KEEPQMDATA=delete")
        self.assertEqual([name for name in self.left("data") if "qmgrs" in name], [])

    def test_a_failure_behind_the_migration_undoes_it(self):
        # Wine does not undo its own removals of files and of registry values: what they name is left out.
        self.value(VERSION, "MigratedFrom", "4.0")
        self.write({"new/own settings.ini": "the user's", "zqvm0001.txt": "own settings.ini\n"})  # an earlier run's list
        kept = {name: text for name, text in self.left("data").items() if "idx" not in name and "cfg" not in name}
        self.install(rf"DATFOLDER={TEMP}\new", "QVFAILDEFERRED=1", status=FAILED)
        deleted = rf"iwiDirectMigrateScripts: Deleted file: '{TEMP}\new\locked.ini'"
        self.assertIn(deleted, self.texts())
        self.assertEqual(self.left("new"), {"new/own settings.ini": "the user's"})
        self.assertEqual({name: text for name, text in self.left("data").items() if name in kept}, kept)
        self.assertRegex(self.recorded(), r"(?m)MigratedFrom +REG_SZ +4\.0$")
        self.assertEqual([path.name for path in self.folder.glob("zqv*")], [TRACE])

    def test_features_are_lost_with_consent_only_and_what_new_ones_replace_stays(self):
        before = self.left("old", "data")
        self.install("ADDLOCAL=Base", status=FAILED)
        self.assertEqual(self.left("old", "data"), before)
        said = message("2110").replace("%1", "Server")
        told = [f"QVCA iwiTestLosingFeatures MB error: {said}", "***Features would be lost: 'Server'"]
        self.assertLessEqual({f"iwiTestLosingFeatures: {line}" for line in told}, set(self.texts()))
        lines = self.upgrade(AGREED, "ADDLOCAL=Base,docs_fr_fr_eclipse,docs_ko_kr_eclipse", rf"PGMFOLDER={TEMP}\old")
        self.assertRegex(self.recorded(), r"(?s)fr_fr.*ko_kr")
        self.assertNotRegex(self.recorded(), "Server|Gateway|en_us")
        self.assertIn("iwiDeletePrevious: Previous version is in the same folder", lines)
        helps = [f"old/doc/chm/{language}/{book}.chm" for language in ("fr_fr", "ko_kr") for book in BOOKS["chm"]]
        self.assertLessEqual({*helps, "old/bin/private.dll", "old/doc/htm", "old/doc/pdf"}, set(self.left("old")))
        self.assertFalse((self.folder / "old/doc/chm/de_de").exists())
        # What is installed may be changed, whatever is recorded.
        self.value(COMPONENTS, "Server", "installed")
        for options in (["REINSTALL=ALL", "REINSTALLMODE=amus"], ["ADDLOCAL=Toolkit"], ["REMOVE=docs_fr_fr_eclipse"]):
            self.install(*options)


if __name__ == "__main__":
    unittest.main()
