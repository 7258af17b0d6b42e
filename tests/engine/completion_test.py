#!/usr/bin/env python3
"""What is left of the reference package when an installation, a removal or a part of it is over, however it ends."""

import shutil
import sys
import unittest

sys.dont_write_bytecode = True
from case import FOLDER, KEY, TEMP, TRACE, VERSION, Case, machine, package
from installation import CANCELLED, FAILED

# Brackets, braces and number signs are signs of their own in the table by which the installer records the folders.
PROGRAMS, DATA, LOGS = "own/[x] {y}/#qv", "own/data [~]", "own/logs"
PLACES = {"PGMFOLDER": PROGRAMS, "DATFOLDER": DATA, "LOGFOLDER": LOGS}
OPTIONS = [rf"{name}={TEMP}" + "\\" + place.replace("/", "\\") for name, place in PLACES.items()]
CHOSEN = ["Base", "Server", "docs_fr_fr_eclipse", "docs_ko_kr_eclipse"]
INDEX = [f"{PROGRAMS}/docs/{language}/help.idx" for language in ("fr_fr", "ko_kr")]
TRACES = [f"{PROGRAMS}/bin/{name}" for name in ("qv1.trc", "qv2.err")] + [f"{DATA}/errors/qv1.log"]
TABLES = [f"{DATA}/conv/437.tbl"]
RECORDS = [f"{DATA}/{name}" for name in ("zqvqmgrs.txt", "zqvmjpse.txt", "zqvilogn.txt", "qmgrs/QM.1/qm.ini")]
LOGGED = [f"{LOGS}/{name}" for name in ("qv1.log", "qv2.txt")]
USERS = [f"{DATA}/errors/users.txt", f"{DATA}/users.ini", f"{PROGRAMS}/bin/users.exe"]
ALWAYS = {TRACE, "msiexec.log"}


class Completion(Case):
    def clear(self):
        if any((machine.drive / FOLDER).rglob("zqvmkdir.exe")):
            machine.msiexec("/x", package.path, FOLDER, *self.options)
        super().clear()

    def left(self):
        """Whatever is in the test's folder but for empty folders."""
        return {str(path.relative_to(self.folder)) for path in self.folder.rglob("*") if path.is_file()}

    def folders(self):
        return {str(path.relative_to(self.folder)) for path in self.folder.rglob("*") if path.is_dir()}

    def product(self, features):
        """The product's files below the test's folder."""
        places = {"ZQVPGMFOLDER": PROGRAMS, "ZQVDATFOLDER": DATA, "ZQVLOGFOLDER": LOGS}
        return {str(path) for path in package.files(features, **places)}

    def expect_no_failure(self):
        lines = self.texts()
        self.assertEqual([line for line in lines if ": ***" in line], [])
        self.assertEqual([line for line in lines if "Returning with rc" in line and not line.endswith(" 0")], [])

    def test_a_removal_leaves_nothing_but_what_the_user_keeps(self):
        self.value(rf"{VERSION}\Zekit", "Version", "4.0.1")  # no removal of the product takes the kit away
        before = self.machine_state()
        for fate in ("delete", "keep"):
            self.install(*OPTIONS, f"ADDLOCAL={','.join(CHOSEN)}", "HIGHCONTRAST=yes")
            self.expect_no_failure()
            answers = {"QVSeries.ini"}
            logged = {f"{DATA}/zqvmjpse.txt"}
            self.assertEqual(self.left(), self.product(CHOSEN) | ALWAYS | answers | logged)
            recorded = machine.read("wine", "reg", "query", KEY, "/s", "/reg:32")
            for name, place in {"PgmFolder": PROGRAMS, "DatFolder": DATA, "LogFolder": LOGS}.items():
                path = TEMP + "\\" + place.replace("/", "\\") + "\\"
                self.assertIn(f"    {name}    REG_SZ    {path}", recorded.splitlines())
            self.assertRegex(recorded, r"VRMF +REG_SZ +6\.0\.2\.0\s")
            self.assertRegex(recorded, r"HighContrastMode +REG_SZ +1\s")
            self.place(*INDEX, *TRACES, *TABLES, *RECORDS, *LOGGED, *USERS, "csd/sub/Valid.csd")
            (self.folder / DATA / "zqvqmgrs.txt").write_text("QM.1")
            self.value(rf"{VERSION}\Maintenance Applied", "Maint [1.1]", rf"{TEMP}\csd")
            made = {*INDEX, *TRACES, *TABLES, *RECORDS, *LOGGED, *USERS, "csd/sub/Valid.csd"}

            if fate == "keep":
                # One language, then the server, alone: what is theirs goes, and nothing else.
                self.install("REMOVE=docs_fr_fr_eclipse")
                self.expect_no_failure()
                made.remove(INDEX[0])
                features = [feature for feature in CHOSEN if feature != "docs_fr_fr_eclipse"]
                self.assertEqual(self.left(), self.product(features) | ALWAYS | answers | made)
                self.assertNotIn(f"{PROGRAMS}/docs/fr_fr", self.folders())
                self.install("REMOVE=Server")
                self.expect_no_failure()
                made -= set(TRACES)
                features.remove("Server")
                self.assertEqual(self.left(), self.product(features) | ALWAYS | answers | made)
                self.assertIn(f"{DATA}/errors", self.folders())
                self.install("REINSTALL=ALL", "REINSTALLMODE=amus")
                self.assertEqual(self.left(), self.product(features) | ALWAYS | answers | made)

            self.remove(f"KEEPQMDATA={fate}")
            self.expect_no_failure()
            self.assertEqual(self.left(), ALWAYS | set(USERS) | (set(RECORDS) if fate == "keep" else set()))
            self.assertEqual(self.machine_state() ^ before, set())
            self.assertFalse({f"{DATA}/conv", LOGS, "csd"} & self.folders())
            shutil.rmtree(self.folder / "own")

    def test_each_end_leaves_nothing_but_the_trace_log_and_what_was_saved(self):
        # Wine does not roll a cancelled script back: then what the rollback's rows would need stays.
        needed = {"zqvp0001.txt", "zqvl0001.dll", "zqvg0001.dll"}
        ends = {"QVUSEREXIT": CANCELLED, "QVFAIL": FAILED, "QVCANCELDEFERRED": CANCELLED, "QVFAILDEFERRED": FAILED}
        ends |= {"QVCANCELEND": CANCELLED, "QVFAILEND": FAILED, "ZQVSERVICESHIPLEVEL": FAILED}
        for option, status in ends.items():
            with self.subTest(option):
                self.folder = machine.fresh_folder(FOLDER)
                self.place("data/qmgrs/QM.1/qm.ini")
                (self.folder / "data/zqvqmgrs.txt").write_text("QM.1")
                early = option.startswith("ZQV")
                value = "x" * 300 if early else "1"
                places = (rf"PGMFOLDER={TEMP}\data\qv", rf"DATFOLDER={TEMP}\data")
                self.install(*places, f"{option}={value}", status=status)
                left = {name for name in self.left() if not name.startswith("data/")}
                saved = {name for name in left if name.startswith("zqvsave/")}
                self.assertEqual(bool(saved), "DEFERRED" in option or option.endswith("END"))
                self.assertEqual(left - saved, ALWAYS | (needed if option == "QVCANCELDEFERRED" else set()))
                self.assertEqual(any(line.startswith(">>") for line in self.read()), not early)
                if any(line.endswith(": Executing in rollback") for line in self.texts()):
                    # The last of the rollback's rows, which runs from the last to the first.
                    self.assertEqual(self.texts()[-1], "iwiCleanUp: Returning with rc 0")
                self.clear()


if __name__ == "__main__":
    unittest.main()
