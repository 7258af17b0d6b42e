#!/usr/bin/env python3
"""Checks that the package and the library's sources agree where both name the same things.

usage: package_test.py BUILD_WINDOWS_DIR [unittest arguments]
"""

import fnmatch
import re
import sys
import unittest
from collections import defaultdict
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
SOURCES = ROOT / "install/pc/winnt/msi"
sys.path.insert(0, str(ROOT / "tools"))
from installation import Package, read_text

SHORT_NAME = r"[\w~$-]{1,8}(\.[\w~$-]{1,3})?"
FIRST_ONLY_PROPERTY = 51 + 256
FEATURE_LISTS = {"ADDLOCAL", "REMOVE", "ADDSOURCE", "ADDDEFAULT", "REINSTALL", "ADVERTISE"}  # the engine's own


class Agreement(unittest.TestCase):
    def test_features_and_actions(self):
        features = re.findall(r"^FEATURE\((\w+)\)$", read_text(SOURCES / "features/feature_table.inc"), re.MULTILINE)
        self.assertCountEqual(features, package.features())
        actions = re.findall(r"^ACTION(?:_AS)?\((\w+),", read_text(SOURCES / "zqviwicn/actions.inc"), re.MULTILINE)
        rows = {row["Target"] for row in package.table("CustomAction") if row["Source"] == "zqviwicn"}
        self.assertEqual(set(actions), rows)

    def answers(self):
        """The keywords that the library looks for in a response file, from its sources: what it reads so by name, and,
        where the name is a variable, the names of the file, and of the lists of features that it uses, which no other
        read or write has."""
        lists = (SOURCES / "features/feature_lists.h").read_text()
        for path in SOURCES.rglob("*.cpp"):
            text = path.read_text()
            read = re.findall(r"\bGetPropertyWithResponse\(([^,)]+)", text)
            yield from (name.strip('"') for name in read if name.startswith('"'))
            if any(not name.startswith('"') for name in read):
                text += lists if "features/feature_lists.h" in text else ""
                other = re.findall(r'\b(?:[GS]et\w*Property|SetSwitch|FillEmpty)\("(\w+)"', text)
                other += re.findall(r'\bFolderNames \w+\{"\w+", "(\w+)"\}', text)
                yield from set(re.findall('"([A-Z]{4,})"', text)) - set(other)

    def test_the_sample_response_file_explains_every_keyword(self):
        sample = read_text(build / "sample.ini")
        self.assertCountEqual(re.findall(r"^;?([A-Z]+)=", sample, re.MULTILINE), set(self.answers()))
        self.assertEqual(re.findall(r"^\[(.*)\]", sample, re.MULTILINE), ["Response"])

    def test_what_is_handed_to_an_elevated_installation(self):
        secure = package.properties["SecureCustomProperties"].split(";")
        self.assertEqual(len(secure), len(set(secure)))
        # Whoever sets one of these has a library loaded.
        self.assertFalse({"ZQVEXTCA60000", "ZQVTEMP", "ZQVPREVPGM"} & set(secure))
        # What only the user-interface sequence finds out would be lost otherwise.
        first = [row["Source"] for row in package.table("CustomAction") if int(row["Type"]) == FIRST_ONLY_PROPERTY]
        related = [row["ActionProperty"] for row in package.table("Upgrade")]
        self.assertLessEqual({*first, *related, *self.answers()} - FEATURE_LISTS, set(secure))
        directories = {"ZQVPGMFOLDER", "ZQVDATFOLDER", "ZQVLOGFOLDER"}
        self.assertLessEqual(directories, set(secure))

    def order(self, sequence):
        """The actions of a sequence, with their conditions, in its order; those of its ends come first."""
        rows = sorted(package.table(sequence), key=lambda row: int(row["Sequence"]))
        return [(row["Action"], row["Condition"]) for row in rows]

    def test_directories_are_placed_before_costing_resolves_them(self):
        placing = [("iwiSetDirs", "NOT Installed"), ("iwiSetRegistryDirs", "Installed")]
        placing += [("iwiFindExistingLogFolder", "Installed"), ("CostInitialize", "")]
        for sequence in ("InstallUISequence", "InstallExecuteSequence"):
            order = self.order(sequence)
            self.assertEqual(order[order.index(placing[-1]) - 3 :][:4], placing)
        costing = ["CostInitialize", "FileCost", "CostFinalize"]
        standard = ["InstallValidate", "InstallInitialize", "InstallAdminPackage", "InstallFiles", "InstallFinalize"]
        own = ["iwiCleanUpOnError", "iwiCleanUpOnCancel", "SetProtectedTemp", "iwiStartLogs"]
        own += ["iwiInstallInitPri", "iwiSetTempLogPath", "iwiPrintSummary", "iwiSetAdminDir"]
        order = [action for action, _ in self.order("AdminExecuteSequence")]
        costing.append("iwiDirectCopyAdminFiles")
        self.assertEqual(order, [*own, *costing, *standard, "iwiUnSetTempLogPath", "iwiCleanUp"])

    def test_an_earlier_version_is_one_in_a_first_installation_only(self):
        conditions = [row["Condition"] for row in package.table("InstallExecuteSequence")]
        found = [condition for condition in conditions if "ZQVPREV" in condition or "ZQVMIGRATE" in condition]
        self.assertEqual([condition for condition in found if not condition.endswith(" AND NOT Installed")], [])

    def test_level(self):
        _, _, modification = package.properties["ProductVersion"].split(".")
        self.assertEqual(package.properties["ZQVSERVICESHIPLEVEL"], f"{modification}.0")
        limits = [row["VersionMin"] or row["VersionMax"] for row in package.table("Upgrade")]
        self.assertEqual(limits, [package.properties["ProductVersion"]] * 2)

    def test_no_uninstall_list_names_what_is_installed(self):
        """The engine would remove it, and not put it back."""
        files = [str(path).lower() for path in package.files(package.features(), ZQVPGMFOLDER="PGM", ZQVDATFOLDER="DAT")]
        binaries = [row["Name"] for row in package.table("Binary") if row["Name"].endswith(".u00")]
        lists = {path.name: path.read_text() for path in (build / "package").glob("*.u00")}
        self.assertCountEqual(lists, binaries)
        self.assertIn("PGM/readme.txt".lower(), files)
        for text in lists.values():
            for line in re.findall(r"^[^;\n].*[^\\\n]$", text, re.MULTILINE):
                folder, _, path = line.rpartition(",")
                pattern = f"{folder or 'PGM'}/{path}".replace("\\", "/").lower()
                self.assertEqual(fnmatch.filter(files, pattern), [])

    def test_components(self):
        """Each program is a component's key path."""
        keys = {row["KeyPath"] for row in package.table("Component")}
        self.assertEqual([row["File"] for row in package.table("File") if row["File"] not in keys], [])


class Dialogs(unittest.TestCase):
    """The dialogs of the package, and of those in other languages."""

    texts = {"Title", "Text", "Description", "Template", "FaceName", "Size", "X", "Y", "Width", "Height"}
    takes_focus = {"CheckBox", "Edit", "ListBox", "PushButton", "RadioButtonGroup", "ScrollableText", "SelectionTree"}
    # What the engine opens by itself, and the actions at the ends of its sequence.
    opened = {"FilesInUse", "ErrorDlg", "CancelledDlg", "FailedDlg"}

    def controls(self, dialog):
        return {row["Control"]: row for row in package.table("Control") if row["Dialog_"] == dialog}

    def test_each_is_one_ring_of_controls(self):
        for dialog in package.table("Dialog"):
            controls, ring = self.controls(dialog["Dialog"]), []
            following = dialog["Control_First"]
            while following not in ring:
                ring.append(following)
                following = controls[following]["Control_Next"]
            self.assertEqual(following, ring[0], dialog)
            wanted = {name for name, row in controls.items() if row["Type"] in self.takes_focus}
            self.assertLessEqual(wanted | {dialog["Control_Default"], dialog["Control_Cancel"]}, set(ring))

    def test_what_is_named_exists(self):
        controls = {(row["Dialog_"], row["Control"]) for row in package.table("Control")}
        for table in ("ControlEvent", "ControlCondition", "EventMapping"):
            self.assertLessEqual({(row["Dialog_"], row["Control_"]) for row in package.table(table)}, controls)
        dialogs = {row["Dialog"] for row in package.table("Dialog")}
        actions = {row["Action"] for row in package.table("CustomAction")}
        events = [(row["Dialog_"], row["Event"], row["Argument"]) for row in package.table("ControlEvent")]
        self.assertLessEqual({name for _, event, name in events if event == "DoAction"}, actions)
        reached = dialogs & ({row["Action"] for row in package.table("InstallUISequence")} | self.opened)
        opening = {"NewDialog", "SpawnDialog", "SpawnWaitDialog"}
        ways = [(dialog, name) for dialog, event, name in events if event in opening]
        while more := {name for dialog, name in ways if dialog in reached} - reached:
            reached |= more
        self.assertEqual(reached, dialogs)

    def test_each_language(self):
        for folder in filter(Path.is_dir, (ROOT / "package/dialogs").iterdir()):
            other = package if folder.name == "en" else Package(build / f"vantrelqv_{folder.name}.msi")
            for path in folder.glob("*.idt"):
                rows, own = ([self.structure(row) for row in each.table(path.stem)] for each in (package, other))
                self.assertCountEqual(own, rows, path)
                # In its code page no letter has been lost. RTF has spellings of its own.
                lines = [line for line in path.read_text(encoding="utf-8").splitlines()[3:] if r"{\rtf" not in line]
                kept = ["\t".join(row.values()) for row in other.table(path.stem)]
                self.assertEqual(set(lines) - set(kept), set())
            for dialog, keys in self.accelerators(other).items():
                self.assertEqual(len(keys), len(set(keys)), f"{folder.name} {dialog}: {keys}")

    def structure(self, row):
        """What is the same in each language."""
        return {column: value for column, value in row.items() if column not in self.texts}

    def accelerators(self, other):
        """The letters that each dialog goes by."""
        buttons = other.table("RadioButton")
        found = defaultdict(list)
        for row in other.table("Control"):
            texts = [row["Text"]] if row["Type"] != "ScrollableText" else []
            texts += [button["Text"] for button in buttons if button["Property"] == row["Property"]]
            found[row["Dialog_"]] += [key for text in texts for key in re.findall(r"&(\w)", text.lower())]
        return found


class Validity(unittest.TestCase):
    """The package's tables against its _Validation table."""

    categories = {
        "Identifier": r"[A-Za-z_][\w.]*",
        "UpperCase": r"[A-Z_][A-Z0-9_.]*",
        "Guid": r"\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\}",
        "Filename": SHORT_NAME + r"(\|.+)?",
        "DefaultDir": rf"(\.|SourceDir|{SHORT_NAME}(\|.+)?)",
    }

    def problem(self, rule, value):
        """What is wrong with a value; None when it is as it should be."""
        if not value:
            return None if rule["Nullable"] == "Y" else "empty"
        if rule["Set"] and value not in rule["Set"].split(";"):
            return "not in the set"
        if rule["MinValue"] and not int(rule["MinValue"]) <= int(value) <= int(rule["MaxValue"]):
            return "out of range"
        column = int(rule["KeyColumn"] or 1) - 1
        if rule["KeyTable"] and not any(value in self.keys[table][column] for table in rule["KeyTable"].split(";")):
            return "no such row" if rule["Category"] != "Version" else None
        pattern = self.categories.get(rule["Category"])
        return None if pattern is None or re.fullmatch(pattern, value) else f"no {rule['Category']}"

    def test_tables(self):
        rules = package.table("_Validation")
        tables = {rule["Table"]: package.table(rule["Table"]) for rule in rules}
        self.keys = defaultdict(lambda: [()])
        for name, rows in tables.items():
            self.keys[name] = [set(column) for column in zip(*map(dict.values, rows))] or [()]
        self.assertEqual(set(tables), set(package.tables()))
        for name in tables:
            columns = [rule["Column"] for rule in rules if rule["Table"] == name]
            self.assertCountEqual(columns, package.columns(name), name)
        wrong = [
            (rule["Table"], rule["Column"], row[rule["Column"]], self.problem(rule, row[rule["Column"]]))
            for rule in rules
            for row in tables[rule["Table"]]
        ]
        self.assertEqual([entry for entry in wrong if entry[3]], [])

    def test_short_names(self):
        """Within a folder no two files have one short name."""
        homes = {row["Component"]: row["Directory_"] for row in package.table("Component")}
        names = [(homes[row["Component_"]], row["FileName"].split("|")[0].upper()) for row in package.table("File")]
        self.assertEqual(len(set(names)), len(names))


if __name__ == "__main__":
    build = Path(sys.argv.pop(1)).resolve()
    package = Package(build / "vantrelqv.msi")
    unittest.main()
