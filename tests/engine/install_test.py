#!/usr/bin/env python3
"""Whole silent installations and removals of the reference package, with the real library in Wine's installer engine."""

import re
import shutil
import sys
import unittest

sys.dont_write_bytecode = True
from case import FOLDER, LATER, OWN, TEMP, TRACE, VERSION, Case, build, machine, message, package
from installation import CANCELLED, FAILED, read_text, response_answers, taken_answers, trace_problems

PROGRAMS, DATA = r"C:\Program Files\Korvex\Vantrel QV", r"C:\ProgramData\Korvex\Vantrel QV"
SOURCE = "Z:" + f"{build}/".replace("/", "\\")
NUMBER = "0001"  # of a fresh folder, in all names there
UNKNOWN_PRODUCT = 1605 & 0xFF
GENERIC_FAILURE = "2041"
CLEANED_UP = "iwiCleanUp: Returning with rc 0"  # the end of a trace log where the installation is no success


class Installation(Case):
    def stop(self, *options, status=FAILED, **more):
        """An installation that is rolled back."""
        run = self.install(*options, status=status, **more)
        self.assertEqual(machine.product_files(), {})
        removed = machine.wine("wine", "msiexec", "/x", package.properties["ProductCode"], "/qn")
        self.assertEqual(removed, UNKNOWN_PRODUCT)
        return run


class Success(Installation):
    def test_installation_and_removal(self):
        for step, files in ((self.install, package.files()), (self.remove, {})):
            name = f"new/{step.__name__}.log"
            run = step(rf"INSTALLTRACE={TEMP}\{name}".replace("/", "\\"), "KEEPQMDATA=delete")
            self.assertEqual(machine.product_files(), files)
            self.assertEqual(trace_problems(self.read(name), self.expect_actions(run)), [])
            # What deferred actions log, they know from the value list alone.
            texts, deferred = self.texts(name), "; from CustomActionData"
            for mode in ("MSIRUNMODE_SCHEDULED", "MSIRUNMODE_COMMIT"):
                self.assertIn(f"(CaProlog): {mode}", texts)
            phases = [*package.actions(bool(files), removal=not files).values()]
            prologs = texts.count(f"(CaProlog): Property 'ProductName' value 'Vantrel QV'{deferred}")
            self.assertEqual(prologs, len(phases) - phases.count("immediate"))
            path = re.escape(rf"iwiUnSetTempLogPath: Property 'ZQVTEMPLOGPATH' value '{TEMP}\zqvg") + r"\d{4}\.txt'"
            self.assertEqual(sum(re.fullmatch(path + deferred, line) is not None for line in texts), 2)
        for folder in ("Program Files", "ProgramData"):
            self.assertFalse((machine.drive / folder / "Korvex/Vantrel QV").exists())

    def test_temporary_log_and_value_list(self):
        """The one is merged and gone; the other is named to every deferred action."""
        given = ["ZQVPREVVERSION=5.3=a b", "ZQVPROPERTYNAMELIST3=ZQVRECORDCOUNTER;;NoSuchProperty;ZQVPREVVERSION"]
        run = self.install(*given, "QVPAUSE=1", "QVKEEPFILES=1")
        self.assertIn(("iwiPause", [0]), [(outcome.action, outcome.results) for outcome in run.outcomes()])
        lines = self.read()
        begin = next(n for n, line in enumerate(lines) if line.startswith(">>"))
        end = next(n for n, line in enumerate(lines) if n > begin and not line.startswith(">>"))
        self.assertIn(rf"Messages from temporary log file '{TEMP}\zqvg{NUMBER}.txt':", lines[begin - 1])
        self.assertIn("End of messages from temporary log file.", lines[end])
        # Whatever was logged while the temporary log was named, and nothing else, is there a second time; but for what
        # the one action that has a log of its own says.
        merged = [line.removeprefix(">>") for line in lines[begin:end]]
        start = lines.index(merged[0], 0, begin - 1)
        others = [line for line in lines[start:] if " iwiTestAndLaunchConfig: " not in line]
        self.assertEqual(merged, others[: len(merged)])
        self.assertIn("Property 'ZQVTEMPLOGPATH' value set to ''", merged[-2])
        self.assertFalse((self.folder / f"zqvg{NUMBER}.txt").exists())

        names = [name for n in "12" for name in package.properties[f"ZQVPROPERTYNAMELIST{n}"].split(";")]
        names += ["ZQVRECORDCOUNTER", "NoSuchProperty", "ZQVPREVVERSION"]
        values = {"ZQVTEMP": TEMP, "ZQVTEMPFILENUM": NUMBER, "UILevel": "2", "ZQVLANGUAGECODE": "a"}
        values |= {"ZQVUSERTRACEPATH": rf"{TEMP}\zqvt0001.log", "ZQVTEMPLOGPATH": rf"{TEMP}\zqvg{NUMBER}.txt"}
        values |= {"ProductName": "Vantrel QV", "ZQVPREVVERSION": "5.3=a b", "ZQVSAVEQMUNITS": "0", "ZQVMKDIR": "1"}
        values |= {"ZQVREMOVE": "0", "ZQVVRMF": "6.0.2.0", "ZQVRECORDCOUNTER": "6"}
        values |= {"ZQVSOURCE": SOURCE, "ZQVZEKITAVAILABLE": "1", "ZQVZEKITSETUP": rf"{SOURCE}zksetup.exe"}
        values |= {"ZQVPERFMON": "1", "ZQVLICENSEPATH": "licenses"}
        values |= {"ZQVPGMFOLDER": f"{PROGRAMS}\\", "ZQVDATFOLDER": f"{DATA}\\", "ZQVLOGFOLDER": f"{DATA}\\log\\"}
        expected = "".join(f"{name}={values.get(name, '')};" for name in names)
        self.assertEqual(self.read(f"zqvp{NUMBER}.txt"), [expected])
        path = rf"value set to '{TEMP}\zqvp{NUMBER}.txt'"
        told = [line for line in self.texts() if line.endswith(path)]
        deferred = [row["Action"] for row in package.table("CustomAction") if int(row["Type"]) & 0x401 == 0x401]
        self.assertCountEqual(told, [f"iwiSetCustomActionData: Property '{name}' {path}" for name in deferred])

        # No trace log, and a temporary one that is kept.
        before = {path.name for path in self.folder.iterdir()}
        self.expect_actions(self.remove("INSTALLTRACE=NONE", "ZQVKEEPTEMPLOG=1"))
        changed = before ^ {path.name for path in self.folder.iterdir()}
        self.assertEqual(changed, {"QVSeries.ini", TRACE, "zqvg0002.txt"})

    def test_the_default_temporary_folder_is_protected(self):
        common = machine.drive / "Program Files/Common Files"
        before = set(common.iterdir())
        self.addCleanup(lambda: [path.unlink() for path in set(common.iterdir()) - before])
        for level, place in (("/qn", r"C:\Program Files\Common Files"), ("/qb", "C:\\users\\")):
            run = self.install("ZQVTEMP=", level=level)
            self.assertRegex(run.log, rf"'ZQVTEMPLOGPATH' value set to '{re.escape(place)}.*zqvg\d{{4}}\.txt'")


class Failure(Installation):
    def stop_and_fold(self, *options, **more):
        """The texts of the trace log of an installation that is rolled back; the temporary log is folded into it."""
        self.stop(*options, **more)
        texts = self.texts()
        self.assertEqual(texts[-1], CLEANED_UP)
        self.assertEqual(list(self.folder.glob("zqvg*.txt")), [])
        return texts

    def test_failure_tells_the_user_once(self):
        texts = self.stop_and_fold("QVFAIL=1")
        said = f"QVCA Test CA MB error: {message(GENERIC_FAILURE)}"
        self.assertEqual([text for text in texts if " MB " in text], [f"Test CA: {said}"])

    def test_cancel(self):
        texts = self.stop_and_fold("QVUSEREXIT=1", status=CANCELLED)
        self.assertIn("iwiUserExit: Returning with rc 1602", texts)
        self.assertFalse([text for text in texts if " MB " in text or "***" in text])

    def test_the_user_interface_sequence_folds_its_log_away(self):
        for option, status in (("QVFAIL=1", FAILED), ("QVUSEREXIT=1", CANCELLED)):
            self.stop_and_fold(option, status=status, level="/qr")

    def test_rollback(self):
        run = self.stop("QVFAILDEFERRED=1")
        self.assertEqual(run.log.count("Action start"), run.log.count("Action ended"))
        said = self.texts()
        self.assertIn(f"Test CA: QVCA Test CA MB error: {message(GENERIC_FAILURE)}", said)
        self.assertIn("Test CA: Property 'UILevel' value '2'; from CustomActionData", said)
        # The rollback action follows the failure and still finds its log and its values.
        failed = said.index("Test CA: Returning with rc 1603")
        rolled_back = said.index("(CaProlog): MSIRUNMODE_ROLLBACK", failed)
        prolog = max(n for n in range(rolled_back) if said[n].startswith("(CaProlog): zqviwicn.dll Built on "))
        name = "(CaProlog): Property 'ProductName' value 'Vantrel QV'; from CustomActionData"
        self.assertEqual(said[prolog + 1], name)
        self.assertNotIn("(CaProlog): MSIRUNMODE_COMMIT", said)


class Replacement(Installation):
    """A later version with a product code of its own."""

    def test_a_later_version_replaces_this_one_and_stays(self):
        # The engine hands a product that gives way nothing of the command line.
        insert = "INSERT INTO `Property` (`Property`, `Value`) VALUES ('%s', '%s')"
        own = [insert % given for given in (("QVNOSTOP", "1"), ("ZQVTEMP", TEMP), ("AGREETOLICENSE", "yes"))]
        this = package.variant(self.folder / "this.msi", *own)
        update = "UPDATE `Property` SET `Value`='%s' WHERE `Property`='%s'"
        own += [update % (LATER, "ProductCode"), update % ("6.0.3", "ProductVersion")]
        # Limits are part of the key.
        columns, row = "`UpgradeCode`, `VersionMax`, `Attributes`, `ActionProperty`", "'6.0.3', 0, 'QVOLDER'"
        code = package.properties["UpgradeCode"]
        own += ["DELETE FROM `Upgrade`", f"INSERT INTO `Upgrade` ({columns}) VALUES ('{code}', {row})"]
        later = package.variant(self.folder / "later.msi", *own)
        for version in (this, later):
            self.assertEqual(machine.msiexec("/i", version.path, FOLDER).status, 0)
            self.assertEqual(machine.product_files(), package.files())
        # The earlier version's own removal has its trace log between the two.
        removal = self.texts("zqvt0003.log")
        self.assertIn("iwiInstallInitPri: Property 'ZQVREMOVE' value set to '1'", removal)
        self.assertEqual(removal[-1], "iwiCleanUpFinal: Returning with rc 0")
        run = machine.msiexec("/i", this.path, FOLDER)
        self.assertEqual((run.status, machine.product_files()), (FAILED, package.files()))
        codes = (package.properties["ProductCode"], LATER)
        removed = [machine.wine("wine", "msiexec", "/x", code, "/qn") for code in codes]
        self.assertEqual((removed, machine.product_files()), ([UNKNOWN_PRODUCT, 0], {}))


class ResponseFiles(Installation):
    """What the user chose travels from one installation to the next."""

    # The feature lists are the engine's, the comments for the reader of the file.
    passed = ["PGMFOLDER", "DATFOLDER", "LOGFOLDER", "KEEPQMDATA", "KEEPWEBDATA", "USERCHOICE", "LAUNCHWIZ"]
    passed += ["STARTSERVICE", "STARTTASKBAR", "HIGHCONTRAST"]
    names = {"PGMFOLDER": "QV programs", "DATFOLDER": "QV data", "LOGFOLDER": "logs of it"}
    places = {switch: rf"{TEMP}\own folders\{name}" for switch, name in names.items()}

    def value_list(self):
        newest = max(self.folder.glob("zqvp*.txt"))
        entries = read_text(newest).rstrip("\n").split(";")
        return dict(entry.split("=", 1) for entry in entries if entry)

    def test_a_written_response_file_is_used_by_the_next_installation(self):
        given = {"KEEPQMDATA": "delete", "USERCHOICE": "no", "STARTSERVICE": "a=b c", "HIGHCONTRAST": "YES"}
        options = [f"{name}={value}" for name, value in given.items()]
        run = self.install(rf"SAVEINI={TEMP}\saved.ini", "QVSETUPTYPE=minimum", *options)
        self.expect_actions(run, "iwiSetFeaturesMinimum")
        files = package.files(["Base", "Server"])
        self.assertEqual(machine.product_files(), files)

        answers = response_answers(read_text(self.folder / "saved.ini"))
        self.assertEqual(answers["ADDLOCAL"], "Base,Server")
        self.assertEqual(set(answers["REMOVE"].split(",")), package.features().keys() - {"Base", "Server"})
        folders = {"PGMFOLDER": PROGRAMS, "DATFOLDER": DATA, "LOGFOLDER": rf"{DATA}\log"}
        self.assertLessEqual(folders.items(), answers.items())
        self.remove()
        self.install(rf"USEINI={TEMP}\saved.ini", "QVKEEPFILES=1")
        expected = {name: value for name, value in answers.items() if name in self.passed}
        self.assertEqual({name: self.value_list()[name] for name in expected}, expected)
        nonempty = {name: value for name, value in expected.items() if value}
        self.assertLessEqual(given.items(), nonempty.items())
        self.assertLessEqual(nonempty.items(), taken_answers(self.read()).items())
        self.assertEqual(machine.product_files(), files)

    def test_folders_and_features_are_real(self):
        """The answers say what is installed and where; repair and removal find it by the registry alone."""
        features = ["Base", "Server", "docs_fr_fr_eclipse"]
        answers = {**self.places, "ADDLOCAL": ",".join(features)}
        lines = ["[Response]", *(f'{name}="{value}"' for name, value in answers.items())]
        (self.folder / "answers.ini").write_text("\n".join(lines))
        other = rf"PGMFOLDER={TEMP}\own folders\other programs"  # before which the file gives way
        files = package.files(features, ZQVPGMFOLDER=f"{OWN}/other programs", ZQVDATFOLDER=f"{OWN}/QV data")
        self.expect_actions(self.install(rf"USEINI={TEMP}\answers.ini", other))
        self.assertEqual(machine.product_files(OWN), files)
        for path in files:
            (machine.drive / path).unlink()
        self.install("REINSTALL=ALL", "REINSTALLMODE=a", "QVKEEPFILES=1")
        self.assertEqual(machine.product_files(OWN), files)
        self.assertEqual(self.value_list()["ZQVLOGFOLDER"], f"{self.places['LOGFOLDER']}\\")
        self.remove("KEEPQMDATA=delete")
        self.assertEqual([*(machine.drive / OWN).rglob("*"), *machine.product_files()], [])
        self.assertNotEqual(self.registry("query", VERSION, "/v", "PgmFolder"), 0)

    def test_answers_are_written_but_for_a_removal(self):
        default = self.folder / "QVSeries.ini"
        sample = response_answers(read_text(shutil.copy(build / "sample.ini", self.folder)))
        self.install(rf"USEINI={TEMP}\sample.ini", "QVKEEPFILES=1")
        expected = {name: value for name, value in sample.items() if name in self.passed}
        self.assertIn("STARTSERVICE", expected)
        self.assertEqual({name: self.value_list()[name] for name in expected}, expected)
        nonempty = {name: value for name, value in expected.items() if value}
        self.assertLessEqual(nonempty.items(), taken_answers(self.read()).items())
        answers = default.read_bytes()
        self.assertIn(b'\r\nADDLOCAL="Base,', answers)
        self.install("ONLYINI=1", rf"SAVEINI={TEMP}\more.ini", status=CANCELLED)
        self.assertEqual((self.folder / "more.ini").read_bytes(), answers)
        self.install("REINSTALL=ALL")
        self.assertEqual(default.read_bytes(), answers)
        # A removal takes away the file that it has emptied; with one of its own not the default one.
        self.remove(rf"SAVEINI={TEMP}\more.ini")
        self.assertEqual(default.read_bytes(), answers)

    def test_a_bad_response_file_ends_the_installation(self):
        (self.folder / "answers.ini").write_text("[Response]\nno keyword\n")
        for name, line in (("none.ini", rf"***Can't open '{TEMP}\none.ini'"), ("answers.ini", "No keyword in line")):
            run = self.stop(rf"USEINI={TEMP}\{name}")
            # The first action that asks for an answer: not even a trace log is begun.
            self.assertIn(f"iwiStartLogs: {line}", run.log)


if __name__ == "__main__":
    unittest.main()
