#!/usr/bin/env python3
"""Installations over a running product, in Wine's installer engine: its services, queue managers and listeners are
programs that run."""

import re
import stat
import sys
import unittest

sys.dont_write_bytecode = True
from case import TEMP, TRACE, Case, machine, package
from installation import FAILED
from running_product import RunningProduct

FIRST, SECOND = "KorvexQVSeries", "QVSeriesServices"
AGAIN = ("REINSTALL=ALL", "REINSTALLMODE=amus")
REBOOT_REQUIRED = 3010 & 0xFF
STOPPING = ("iwiStartStopping", "iwiStopAllQv", "iwiStopAllQvExec")


class Running(Case):
    """Each test installs the product, sets some of it running, and installs it again."""

    options = (f"ZQVTEMP={TEMP}", "AGREETOLICENSE=yes")

    def setUp(self):
        super().setUp()
        self.product = RunningProduct(machine)
        self.addCleanup(self.product.end)
        self.install("QVNOSTOP=1")
        self.assertEqual(machine.product_files(), package.files())

    def again(self, *options, status=0, more=STOPPING):
        """Installs once more; gives what `runs` gives."""
        self.expect_actions(self.install(*AGAIN, *options, status=status), *more, first=False)
        return self.runs()

    def runs(self):
        """The texts of the trace log of each run of an action, in order."""
        runs = [[]]
        for line in self.texts():
            action, text = line.split(": ", 1)
            self.assertFalse(text.startswith("***"), line)
            runs[-1].append((action, text))
            if text.startswith("Returning with rc"):
                runs.append([])
        return [(lines[-1][0], [text for action, text in lines]) for lines in runs if lines]

    def change(self, *programs):
        """Makes programs differ from those of the package, so that the engine replaces them."""
        for program in programs:
            with open(self.product.programs / program, "ab") as file:
                file.write(b"changed")

    def expect_order(self, lines, *expected):
        """Some of the lines are those expected, in their order."""
        rest = iter(lines)
        for text in expected:
            self.assertTrue(any(line == text for line in rest), f"'{text}' is missing, or too early, in {lines}")

    def expect_replaced(self, runs):
        """The engine could replace every file at once, and needs no reboot."""
        self.product.end()
        self.assertEqual(machine.product_files(), package.files())
        self.assertIn("Property 'ZQVBOOT' value set to ''", dict(runs)["iwiSetZqvBoot"])

    def stops(self, runs):
        """The lines of the immediate and of the deferred stop."""
        return [lines for action, lines in runs if action == "iwiStopAllQv"]

    def test_services_that_take_their_time(self):
        self.change("zqvsvc.exe")
        self.product.register_service(FIRST, "Korvex QVSeries", lingers=True)
        self.product.register_service(SECOND, "QVSeries Services")
        self.product.start_services()
        self.product.let_stop_once_seen(FIRST, self.folder / TRACE)
        runs = self.again()
        asked = dict(runs)["iwiStartStopping"]
        self.expect_order(asked, *(f"Stopping service '{name}'" for name in (FIRST, SECOND)))
        immediate, deferred = self.stops(runs)
        self.expect_order(immediate, f"Service '{FIRST}' is running", f"Service '{FIRST}' already stopping")
        self.expect_order(immediate, f"Service '{SECOND}' is not running", f"Total ticks = {(240 + 12 + 120) * 100000}")
        self.assertIn("Property 'ZQVSTOPPLAN' value '1,0,0'; from CustomActionData", deferred)
        # One wait for the service, of two steps at least; one for the files.
        service, files = [line for line in deferred if line.startswith("Wait")]
        self.assertRegex(service, r"^Waited [1-9]\d* seconds$")
        self.assertRegex(files, r"^Waited \d+ seconds$")
        self.expect_order(deferred, f"Service '{FIRST}' is running", f"Service '{FIRST}' is not running")
        self.expect_replaced(runs)

    def test_each_part_ends_in_turn(self):
        programs = ("zqvzxma0.exe", "runqvlsr.exe", "zqvmtbrn.exe", "zqvmsrvn.exe", "zqvxssvn.exe")
        self.change(*programs)
        self.product.list_queue_managers("; one of them", "", " QM.ONE ")
        for _ in range(2):
            self.product.start("zqvzxma0.exe", "QM.ONE")
        # One listener goes when it is asked, the other only by force.
        listeners = [self.product.start("runqvlsr.exe", *manager) for manager in (["QM.ONE"], [])]
        for program in ("zqvmtbrn.exe", "zqvmtbrn.exe", "zqvxssvn.exe"):
            self.product.start(program)
        (self.product.programs / "zqvmsrvn.exe").chmod(stat.S_IRUSR | stat.S_IRGRP)
        runs = self.again(more=(*STOPPING, "iwiSaveQmConfigExec"))
        self.assertEqual(self.product.outlived(), 0)
        immediate, deferred = self.stops(runs)
        self.expect_order(immediate, "Queue manager 'QM.ONE'", "Found endqvlsr")
        total = f"Total ticks = {(6 + 90 + 20 + 6 + 120) * 100000}"
        self.assertEqual(immediate[-3:-1], [total, "Property 'ZQVSTOPPLAN' value set to '0,0,1'"])
        self.assertFalse([line for line in immediate if line.startswith("Unable to launch")])
        path = self.product.path
        waits = [re.sub(r"Waited \d+", "Waited some", line) for line in deferred if line.startswith("Wait")]
        self.assertEqual(waits, ["Waited some seconds", "Wait timed out after 10 seconds", "Waited some seconds"])
        listener, last = path("runqvlsr.exe"), path("zqvxssvn.exe")
        self.expect_order(deferred, "No queue managers running", f"'{listener}' is in use", f"File '{listener}' is locked")
        others = {"zqvmtbrn.exe": "locked", "zqvmsrvn.exe": "not locked", "zqvxssvn.exe": "locked"}
        states = [f"File '{path(program)}' is {state}" for program, state in others.items()]
        self.expect_order(deferred, f"File '{listener}' is locked", *states, f"'{last}' is not in use")
        found = [re.sub(r"\d+", "N", line) for line in deferred if line.startswith("Found process")]
        ended = ["runqvlsr.exe", "zqvmtbrn.exe", "zqvmtbrn.exe", "zqvxssvn.exe"]
        self.assertEqual(found, [f"Found process ID N '{path(program)}'" for program in ended])
        self.assertEqual(sum(line.endswith(" terminated") for line in deferred), 4)
        self.assertTrue((self.product.programs / "zqvmsrvn.exe").stat().st_mode & stat.S_IWUSR)
        self.assertTrue(all(process.returncode == 0 for process in listeners))
        self.expect_replaced(runs)

    def test_a_file_that_stays_held_is_replaced_at_reboot(self):
        self.change("zqvmsrvn.exe")
        self.product.start("zqvmsrvn.exe")
        runs = self.again("QVNOSTOP=1", status=REBOOT_REQUIRED, more=())
        self.assertEqual(self.stops(runs), [])
        self.assertIn("Property 'ZQVBOOT' value set to '1'", dict(runs)["iwiSetZqvBoot"])
        self.product.end()
        self.assertEqual(machine.wine("wine", "wineboot"), 0)
        self.assertEqual(machine.product_files(), package.files())

    def test_rename_and_its_rollback(self):
        self.product.register_service(FIRST, "Korvex QVSeries")
        runs = self.again("QVNOSTOP=1", "QVRENAMESERVICE=1", more=("iwiRenameQvServiceExec",))
        renamed = f"Service '{FIRST}' renamed 'Korvex QVSeries Deleted'"
        self.expect_order(dict(runs)["iwiRenameQvService"], "Deferred execution", renamed)
        self.assertEqual(self.product.display_name(FIRST), "Korvex QVSeries Deleted")

        # A failure after it: the old name is back. Wine rolls back first installations only.
        self.remove("QVNOSTOP=1")
        self.install("QVRENAMESERVICE=1", "QVFAILDEFERRED=1", status=FAILED)
        runs = self.runs()
        self.assertEqual(machine.product_files(), {})
        names = [lines for action, lines in runs if action == "iwiRenameQvService"]
        self.expect_order(names[0], "Deferred execution", renamed)
        self.expect_order(names[1], "Executing in rollback", f"Service '{FIRST}' renamed 'Korvex QVSeries'")
        self.assertEqual(self.product.display_name(FIRST), "Korvex QVSeries")


if __name__ == "__main__":
    unittest.main()
