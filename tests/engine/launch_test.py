#!/usr/bin/env python3
"""What an installation of the reference package launches: each of its programs, and a viewer of documents, writes down
how it was called."""

import shutil
import sys
import time
import unittest

sys.dont_write_bytecode = True
from case import OWN, TEMP, Case, build, machine
from installation import FAILED, PATIENCE

HOME = rf"{TEMP}\own folders"
PROGRAMS, DATA = rf"{HOME}\QV programs", rf"{HOME}\QV data"
WIZARD_FILE = "wizard file.ini"
DATA_FOLDERS = ["conv", "errors", "qmgrs", "web", "web/scripts"]
ASKED = [f"{name}=1" for name in ("QVLAUNCHPAD", "QVREADME", "QVSSLINFO", "QVSSLWIZARD", "QVSETQVSCP")]
VIEWED = rf"viewer|{PROGRAMS}"
INSTALLED = [f"zqvmkdir|{DATA}\\", "zksetup|/s", "zqvregnet|-i"]


class Launch(Case):
    def setUp(self):
        super().setUp()
        self.place(WIZARD_FILE)
        shutil.copy(build / "package/parts/stand_in.exe", self.folder / "viewer.exe")
        for kind in (".txt", ".htm"):
            self.value_of_class(kind, "qvdocument")
        self.value_of_class(r"qvdocument\shell\open\command", rf'"{TEMP}\viewer.exe" "%1"')
        machine.environment["QVCALLS"] = rf"{TEMP}\calls.txt"
        self.addCleanup(machine.environment.pop, "QVCALLS")

    def value_of_class(self, key, value):
        self.assertEqual(machine.wine("wine", "reg", "add", rf"HKCR\{key}", "/ve", "/d", value, "/f"), 0)

    def launch(self, *options, **more):
        """Installs; gives the lines of the log."""
        self.install(rf"PGMFOLDER={PROGRAMS}", rf"DATFOLDER={DATA}", *ASKED, *options, **more)
        return self.texts()

    def expect_calls(self, *calls):
        """What is not waited for may come behind the installation."""
        end = time.monotonic() + PATIENCE
        while len(self.read("calls.txt")) < len(calls) and time.monotonic() < end:
            time.sleep(0.05)
        self.assertCountEqual(self.read("calls.txt"), calls)

    def test_all_arguments_arrive_whole(self):
        lines = self.launch(rf'WIZPARMFILE={TEMP}\{WIZARD_FILE}', level="/qb")
        called = [*INSTALLED, rf"zqvmjpse|{TEMP}\{WIZARD_FILE}", "zqvtcert", "zqvlpad", "zqvsslwz", "setqvscp"]
        self.expect_calls(*called, rf"{VIEWED}\readme.txt", rf"{VIEWED}\doc\sslinfo.htm")
        self.assertEqual([line for line in lines if "***" in line], [])
        self.assertIn(rf"iwiSetARPREADME: Property 'ARPREADME' value set to '{PROGRAMS}\readme.txt'", lines)
        home = machine.drive / OWN / "QV data"
        self.assertEqual(sorted(str(p.relative_to(home)) for p in home.rglob("*") if p.is_dir()), DATA_FOLDERS)
        self.remove("KEEPQMDATA=delete")
        self.assertEqual(list((machine.drive / OWN).rglob("*")), [])

    def test_a_silent_installation_has_its_folders_made_or_fails(self):
        machine.environment["QVEXITCODE"] = "3"
        lines = self.launch(status=FAILED)
        del machine.environment["QVEXITCODE"]
        self.assertIn(rf"iwiLaunchZqvMkDir: ***'{PROGRAMS}\bin\zqvmkdir.exe' ended with 3", lines)
        lines = self.launch()
        self.expect_calls(INSTALLED[0], *INSTALLED)
        self.assertEqual(sum("Silent installation; '" in line for line in lines), len(ASKED) + 2)

    def test_a_client_has_no_programs_of_the_server(self):
        lines = self.launch("ZQVCLIENT=1", level="/qb")
        self.expect_calls(*INSTALLED[1:], "zqvlpad", rf"{VIEWED}\readme.txt")
        self.assertEqual(sum("Client-only installation; '" in line for line in lines), len(ASKED) + 1)


if __name__ == "__main__":
    unittest.main()
