#!/usr/bin/env python3
"""What lies beside the product comes, goes, and is as it was after a failure behind any of it."""

import sys
import unittest

sys.dont_write_bytecode = True
from case import OWN, TEMP, TRACE, Case, build, machine, message, package
from installation import FAILED

HOME, PROGRAMS, DATA = machine.drive / OWN / "Q=V", rf"{TEMP}\own folders\Q=V", rf"{TEMP}\own folders\data"
CHOSEN = ["Base", "Server", "docs_de_de_eclipse", "docs_zh_cn_eclipse"]
COUNTERS = r"Launching process 'C:\windows\system32\%slodctr.exe' '%s'; dir 'C:\windows\system32'."
COUNTERS_COME, COUNTERS_GO = COUNTERS % ("", rf'"{PROGRAMS}\bin\zqvmperf.ini"'), COUNTERS % ("un", "QVSeries")
COMING = ["DirectBackupCcsid", "DirectInstallZekit", "CopyLicenseFile", "InstallVlsm", "ReconcileEclipseLinkFiles"]
COMING += ["RegisterDotNet", "DirectAddPerfMonExec"]
GOING = {"DeregisterDotNet": [], "DirectDeletePerfMon": [COUNTERS_GO]}  # what has become of the counters behind each
USERS = ["licenses/own.txt", "eclipse/links/own.link"]
READ_ONLY = ["licenses/de_DE.txt", "licenses/sig/toolkit.sig", "eclipse/links/zqv_de_de.link"]
THERE = [*USERS, *READ_ONLY, "licenses/en_US.txt", "licenses/sig/old.sig", "eclipse/links/zqv_fr_fr.link"]
machine.environment["QVCALLS"] = rf"{TEMP}\calls.txt"


class Side(Case):
    options = (*Case.options, rf"PGMFOLDER={PROGRAMS}", f"DATFOLDER={DATA}")

    def begin(self, *options, **more):
        self.install(f"ADDLOCAL={','.join(CHOSEN)}", *options, **more)

    def called(self):
        """What has been called since this was asked last; what became of the counters in the last installation."""
        calls = self.read("calls.txt")
        (self.folder / "calls.txt").unlink(missing_ok=True)
        return calls + [text for line in self.texts() for text in (COUNTERS_COME, COUNTERS_GO) if line.endswith(text)]

    def below(self, folder):
        """All that is below a folder, with contents and what may be done to it, but for the engine's own folders: as long
        as the console of a program that has ended is in one, Wine cannot remove it."""
        paths = set(folder.rglob("*")) - {HOME, HOME / "bin"}
        return {(path, path.stat().st_mode, path.is_file() and path.read_bytes()) for path in paths}

    def state(self):
        return self.machine_state() | self.below(machine.drive / OWN)

    def failing(self, action):
        """The package with a failure right behind the deferred row of an action, where it is asked for."""
        rows = {row["Action"]: int(row["Sequence"]) for row in package.table("InstallExecuteSequence")}
        query = "UPDATE `InstallExecuteSequence` SET `Sequence`=%d WHERE `Action`='testExec'"
        return package.variant(self.folder / "failing.msi", query % (rows[f"iwi{action}Exec"] + 1))

    def expect_added(self, features):
        """What is beside the product's own files is what the media have and the features need."""
        paths = [path for top in ("licenses", "eclipse") for path in (HOME / top).rglob("*.*")]
        expected = package.added_files(features, HOME.relative_to(machine.drive))
        self.assertEqual({path.relative_to(machine.drive): path.read_bytes() for path in paths}, expected)

    def test_all_of_it_comes_and_goes(self):
        before = self.state()
        self.begin()
        self.assertEqual([line for line in self.texts() if "***" in line], [])
        self.assertEqual(self.called(), [f"zqvmkdir|{DATA}\\", "zksetup|/s", "zqvregnet|-i", COUNTERS_COME])
        self.assertEqual([path.name for path in self.folder.glob("zqv*")], [TRACE])
        self.expect_added(CHOSEN)
        for name in READ_ONLY:
            (HOME / name).unlink()
        changes = {"REINSTALL=ALL": CHOSEN, f"REMOVE={CHOSEN[2]}": CHOSEN[3:], f"REMOVE={CHOSEN[3]}": []}
        for change, features in changes.items():
            self.install(change)
            self.expect_added(features)
        self.assertFalse((HOME / "eclipse").exists() or "zksetup|/s" in self.called())
        self.remove("KEEPQMDATA=delete")
        self.assertEqual(self.called(), ["zqvregnet|-u", COUNTERS_GO])
        self.assertEqual(machine.wine("wine", build / "zksetup.exe", "/u"), 0)
        self.assertEqual(self.state() ^ before, set())

    def test_over_what_is_there_and_with_failures_behind_each_that_comes(self):
        self.place("old/conv/437.tbl", *(f"own folders/Q=V/{name}" for name in THERE))
        for path in (HOME / name for name in THERE):
            path.write_text(f"the earlier {path.name}")
            path.chmod(0o444 if any(path.match(name) for name in READ_ONLY) else 0o644)
            self.addCleanup(path.unlink, missing_ok=True)
        before = self.state()
        for action, licence in [*((action, "production") for action in COMING), ("InstallVlsm", "beta")]:
            more = (rf"ZQVPREVDAT={TEMP}\old", f"ZQVLICENSETYPE={licence}", "QVFAILDEFERRED=1")
            self.begin(*more, of=self.failing(action), status=FAILED)
            undone = {f"iwi{name}: Executing in rollback" for name in GOING} <= {*self.texts()}
            saved = (self.folder / "zqvsave/conv/437.tbl").exists()
            self.assertEqual((self.state() ^ before, undone, saved), (set(), True, True), (action, licence))
        self.begin()
        self.assertEqual(len([*HOME.glob("licenses/sig/*.sig")]), 3)
        self.assertEqual((HOME / READ_ONLY[1]).read_bytes(), (build / "licenses/toolkit.sig").read_bytes())
        self.install("REINSTALL=ALL", "ZQVLICENSETYPE=beta")
        self.assertEqual([*HOME.glob("licenses/sig/*.sig")], [])
        self.remove("KEEPQMDATA=delete")
        self.assertCountEqual(HOME.rglob("*.*"), [HOME / name for name in USERS])

    def test_failures_behind_each_that_goes(self):
        for action, counters in GOING.items():
            self.begin(of=self.failing(action))
            before = self.below(HOME)
            self.called()
            self.remove("QVFAILDEFERRED=1", status=FAILED)
            # Wine undoes, too, what it has not come to: counters, the data's empty folders, the product's registration.
            self.assertEqual(self.called(), ["zqvregnet|-u", "zqvregnet|-i", *counters, COUNTERS_COME])
            self.assertEqual(self.below(HOME) ^ before, set())
        self.begin()
        self.remove()

    def test_no_silent_installation_without_agreement_and_none_without_the_kit(self):
        machine.environment["QVZEKITEXITCODE"] = "5"
        self.addCleanup(machine.environment.pop, "QVZEKITEXITCODE")
        kit, agreement, before = "iwiDirectInstallZekit", "iwiCheckLicenseAgree", self.state()
        for answer in ("", "no", "yes"):
            self.begin(f"AGREETOLICENSE={answer}", status=FAILED)
            ends = [f"{agreement}: QVCA {agreement} MB error: {message(2140)}"]
            ends += [f"{agreement}: ***AGREETOLICENSE value '{answer}' not acceptable"]
            ends = [f"{kit}: ***Zekit setup ended with 5"] if answer == "yes" else ends
            self.assertEqual([line for line in self.texts() if "***" in line or " MB " in line][: len(ends)], ends)
            self.assertEqual(self.state() ^ before, set())
        machine.environment["QVZEKITEXITCODE"] = "3010"
        (self.folder / "answers.ini").write_text("[Response]\nAGREETOLICENSE=yes\n")
        self.begin(rf"USEINI={TEMP}\answers.ini", "AGREETOLICENSE=")
        self.assertIn(f"{kit}: Zekit is installed; it wants a restart", self.texts())
        self.remove("KEEPQMDATA=delete")
        # One that was there before the installation outlives its failure.
        before = self.state()
        self.begin("QVFAILDEFERRED=1", status=FAILED)
        self.assertEqual(self.state() ^ before, set())


if __name__ == "__main__":
    unittest.main()
