#!/usr/bin/env python3
"""Installations with the dialogs of the package, on a virtual display, in Wine's installer engine."""

import sys
import unittest

sys.dont_write_bytecode = True
from case import FOLDER, OWN, ROOT, TEMP, TRACE, Case, build, machine, message, package
from dialogs import Screen
from installation import PATIENCE, Machine, Package
from pictures import IN_USE, OWED
from running_product import RunningProduct, windows

PLACES = {"ZQVPGMFOLDER": f"{OWN}/QV programs", "ZQVDATFOLDER": f"{OWN}/QV data"}
PROGRAMS, DATA = (f"C:\\{windows(place)}" for place in PLACES.values())
DEFAULTS = (r"C:\Program Files\Korvex\Vantrel QV", r"C:\ProgramData\Korvex\Vantrel QV")
ENTER, ESCAPE = 13, 27
USER_EXIT, FAILURE = 1602, 1603
MINIMUM, TYPICAL = ["Base", "Server"], ["Base", "Server", "Explorer", "JavaMsg", "Toolkit"]

BOX = (message(2027), [], "OK")
WAY = (
    ("WelcomeDlg", [], "Next"),
    ("LicenseDlg", [], ("AgreeToLicense", "Yes"), "Next"),
    ("SetupTypeDlg", [], ("QVSETUPTYPE", "minimum"), "Next"),
    ("FoldersDlg", [], "Next"),
)

LEAVE = (("CancelDlg", [], "Yes"), ("CancelledDlg", [], "Finish"))


class InDialogs(Case):
    def setUp(self):
        super().setUp()
        self.screen = self.show(machine)

    def show(self, on):
        on.fresh_folder(FOLDER)
        screen = Screen(on, build / "dialogs.exe")
        self.addCleanup(screen.close)
        return screen

    def open(self, *options, of=package, screen=None):
        screen = screen or self.screen
        (screen.machine.drive / FOLDER / TRACE).unlink(missing_ok=True)
        return screen.open(of, FOLDER, *options)

    def summary(self, *installed, of=package, language="en_us", places=(PROGRAMS, DATA)):
        """The rows of SummaryDlg."""
        titles = {row["Feature"]: row["Title"] for row in of.table("Feature")}
        programs, data = (place + "\\" for place in places)
        inserts = [(2125, programs), (2126, data), (2127, data + "log\\")]
        inserts += [*((2128, titles[feature]) for feature in installed), (2131, rf"{TEMP}\{TRACE}")]
        rows = [message(number, language).replace("%1", text) for number, text in inserts]
        return [message(2001, language).replace("%s", "6.0"), *rows]

    def test_from_welcome_to_finish_and_removal(self):
        self.registry("add", *OWED, "/t", "REG_MULTI_SZ", "/d", rf"\??\{PROGRAMS}\bin\zqvsvc.exe")
        self.addCleanup(self.registry, "delete", *OWED)
        splash = self.screen.start(build / "package/parts/zqvsplash.exe")
        self.assertEqual(splash.stdout.readline(), "shown\n")
        dialogs = self.open(*self.options)
        needs = [message(2123)]
        dialogs.walk(("WelcomeDlg", []), status=None)
        self.assertEqual(splash.wait(PATIENCE), 0)
        dialogs.use(("key", ENTER))
        dialogs.walk(
            ("LicenseDlg", [], ("alt", "a"), ("alt", "n")),
            ("SetupTypeDlg", [], ("QVSETUPTYPE", "typical"), "Next"),
            ("FoldersDlg", [], "BrowsePgm"),
            ("BrowseDlg", [], ("set", "nowhere"), "OK"),
            ("InvalidFolderDlg", [], "OK"),
            ("BrowseDlg", [], ("set", PROGRAMS), "OK"),
            ("FoldersDlg", [], "BrowseDat"),
            ("BrowseDlg", [], ("set", DATA), "OK"),
            ("FoldersDlg", [], "Next"),
            ("NeedsDlg", needs, "Back"),
            ("FoldersDlg", [], "Next"),
            ("NeedsDlg", needs, "Retry"),
            ("NeedsDlg", needs),
            status=None,
        )
        self.registry("delete", *OWED)
        dialogs.use("Retry")
        dialogs.walk(
            ("SummaryDlg", self.summary(*TYPICAL), ("key", ESCAPE)),
            ("CancelDlg", [], ("key", ESCAPE)),
            ("SummaryDlg", self.summary(*TYPICAL), "Back"),
            ("FoldersDlg", [], "Back"),
            ("SetupTypeDlg", [], ("QVSETUPTYPE", "minimum"), "Next"),
            ("FoldersDlg", [], "Next"),
            ("SummaryDlg", self.summary(*MINIMUM), "Install"),
            ("FinishedDlg", [], "Finish"),
        )
        self.assertEqual(machine.product_files(OWN), package.files(MINIMUM, **PLACES))
        self.assertFalse([line for line in self.texts() if ": ***" in line])

        product = RunningProduct(machine, PLACES["ZQVPGMFOLDER"] + "/bin", PLACES["ZQVDATFOLDER"])
        self.addCleanup(product.end)
        product.register_service("KorvexQVSeries", "Korvex QVSeries", lingers=True)
        product.start_services()
        (product.programs / "zqvlpad.exe").unlink()
        dialogs = self.open(self.options[0])
        dialogs.walk(
            ("MaintenanceDlg", [], ("ZQVREINSTALLOPTIONS", "refresh"), "Next"),
            ("SummaryDlg", self.summary(), "Install"),
            ("ProgressDlg", []),
            status=None,
        )
        dialogs.wait_for("KorvexQVSeries")
        product.let_stop()
        dialogs.walk(("FinishedDlg", [], "Finish"))
        product.end()
        self.assertEqual(machine.product_files(OWN), package.files(MINIMUM, **PLACES))

        self.open(*self.options).walk(
            ("MaintenanceDlg", [], ("ZQVREINSTALLOPTIONS", "remove"), "Next"),
            ("RemoveDlg", [], "Remove"),
            ("FinishedDlg", [], "Finish"),
        )
        self.assertEqual(machine.product_files(OWN), {})

    def test_other_ends(self):
        locale = {"LOCPATH": str(build / "locales"), "LC_ALL": "ja_JP.UTF-8"}
        for of, language, on, option, use, end, status in (
            ("", "en_us", machine, "QVFAIL=1", "Install", (BOX, ("FailedDlg", [], "Finish")), FAILURE),
            ("_de", "de_de", machine, "", "Cancel", LEAVE, USER_EXIT),
            ("_ja", "ja_jp", Machine(build.parent / "wine-ja_JP", **locale), "", "Cancel", LEAVE, USER_EXIT),
        ):
            of = Package(build / f"vantrelqv{of}.msi")
            dialogs = self.open(*self.options, option, of=of, screen=self.screen if on is machine else self.show(on))
            rows = self.summary(*MINIMUM, of=of, language=language, places=DEFAULTS)
            dialogs.walk(WAY[0], ("LicenseDlg", []), status=None)
            licence = ROOT / "package/licenses" / ("en_US.txt" if on is machine else "ja_JP.txt")
            dialogs.wait_for(licence.read_text(encoding="utf-8").splitlines()[-1])
            for step in WAY[1][2:]:
                dialogs.use(step)
            dialogs.walk(*WAY[2:], ("SummaryDlg", rows, use), *end, status=status)
            self.assertEqual(on.product_files(), {})

    def test_a_feature_that_another_one_needs(self):
        needs = [message(2124).replace("%1", "FTA_Server").replace("%2", "Server")]
        way = (*WAY[:2], ("SetupTypeDlg", [], "Next"), ("FeaturesDlg", [], "Next"), ("FoldersDlg", [], "Next"))
        dialogs = self.open(*self.options, "ADDLOCAL=Base,FTA_Server")
        way = (*way, ("NeedsDlg", needs, "Back"), way[-1], ("NeedsDlg", needs, "Cancel"))
        dialogs.walk(*way, *LEAVE, status=USER_EXIT)

    def test_files_in_use(self):
        """The engine never finds any here, so that the dialog is made the first one."""
        in_use = package.variant(self.folder / "variant.msi", *IN_USE)
        steps = (("FilesInUse", ["Vantrel QV"], "Exit"), ("CancelledDlg", [], "Finish"))
        self.open(of=in_use).walk(*steps, status=USER_EXIT)


if __name__ == "__main__":
    unittest.main()
