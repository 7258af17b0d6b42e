#!/usr/bin/env python3
"""Checks what tools/diagnose says about logs: made up ones, spoilt ones, and those of the fault sweep, of which it is
known what was made to fail.

usage: diagnose_test.py SOURCE_ROOT HOST_TESTS [unittest arguments]

The sweep's case takes one action's runs; ZQV_SWEEP_FILTER in the environment, a GoogleTest filter, takes others, and
what is not told right is listed.
"""

import collections
import json
import os
import random
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from pathlib import Path

sys.dont_write_bytecode = True
root = Path(sys.argv.pop(1))
host_tests = Path(sys.argv.pop(1)).resolve()
sys.path.insert(0, str(root / "tools"))
from diagnosis.advice import Adviser
from diagnosis.codes import call_of, code_of
from diagnosis.reading import CHUNK
from diagnosis.story import read

OLD = 1_000_000_000
adviser = Adviser()


def action(name, *texts, rc=0, modes=(), at="10:00:00", end=None):
    """The lines of an action; `rc` none: it has not returned."""
    texts = [f"(CaProlog): {text}" for text in ("zqviwicn.dll Built on today", *(f"MSIRUNMODE_{m}" for m in modes))] + [
        f"{name}: {text}" for text in ("Property 'X' value 'x' from property table", *texts)
    ]
    lines = [f"{at} QVCA info {text}" for text in texts]
    return lines if rc is None else lines + [f"{end or at} QVCA info {name}: Returning with rc {rc}"]


def engine(*lines, row=None, value=1):
    """Lines as the installer's own log shows them, as those of an action or of all."""
    lines = [re.sub(r"^(?=\S+ QVCA info .*)", "1: ", line) for line in lines]
    return [f"Action start 10:00:00: {row}.", *lines, f"Action ended 10:00:00: {row}. Return value {value}."]


GET = "***msiGetProperty('ZQVTEMP') failed (234)"
DONE = action("iwiCleanUpFinal")
FAILED = action("iwiSetDirs", "Property 'A' value 'b' from property table", GET, rc=1603)
ROLLBACK = action("iwiCleanUp", modes=("ROLLBACK",))
MERGED = [f">>{line}" for line in FAILED]
OUTER = ["10:00:00 QVCA info (CaProlog): zqviwicn.dll Built on today"]
OUTER += [r"10:00:00 QVCA info (CaProlog): Executing 'C:\x\zqviwicn.dll(iwiSetDirs)'"]
GOT = ("iwiSetDirs", "MsiGetProperty", "ZQVTEMP", 234)
MSI = "MSI (s) (44:B4) [10:00:00:123]"
SWEPT = {"OpenCFile": "fopen"}  # by the stand-in's name

# Log, outcome, whether that is guessed, and of the first action that failed: name, call, argument, code.
STORIES = {
    "succeeded": (action("iwiStartLogs") + DONE, "succeeded", False, None),
    "cancelled": (action("iwiUserExit", rc=1602) + action("iwiCleanUp"), "cancelled", False, ("iwiUserExit",)),
    "failed": (FAILED + action("iwiCleanUp"), "failed", False, GOT),
    "told by a list": (
        action("test", "***Delete file error: 80 'a'", "File: 'a'", "***Folder 'x' cannot be deleted", rc=1603),
        *("failed", False, ("test", "DeleteFile", "a", 80)),
    ),
    "the one that ends it": (
        action("iwiSetDirs", "***Exception in service 's'", "Property 'A' not defined in property table", GET, rc=1603),
        *("failed", False, GOT),
    ),
    "a code by its name": (
        action("test", "***Error ERROR_ACCESS_DENIED copying 'a'", rc=1603),
        *("failed", False, ("test", "CopyFileEx, CreateFile or GetFileInformationByHandle", "a", 5)),
    ),
    "an unknown phase": (
        [OUTER[0], "10:00:00 QVCA info (CaProlog): Property 'ProductName' not defined in property table", *FAILED[1:]],
        *("failed", False, ("iwiSetDirs", "MsiGetMode", "", None)),
    ),
    "what goes on does not decide": (
        action("iwiInit", "***Line 3 of list 'x' is no path", "***MsiViewClose('q') failed (5)", rc=1603),
        *("failed", False, ("iwiInit", "MsiViewClose", "q", 5)),
    ),
    "without asterisks": (
        action("iwiInit", "MsiViewFetch(1) error 13. Query 'SELECT * FROM UIText'", "QVCA I MB error: x", rc=1603),
        *("failed", False, ("iwiInit", "MsiViewFetch", "SELECT * FROM UIText", 13)),
    ),
    "broken off within": (action("iwiStopAllQv", rc=None), "broken off", False, ("iwiStopAllQv",)),
    "broken off before": (action("iwiStopAllQv", rc=None) + FAILED[:1], "broken off", False, ("iwiStopAllQv",)),
    "broken off between": (action("iwiSetDirs"), "broken off", True, None),
    "crashed, says the engine": (
        engine(*engine(*action("iwiA", rc=None), row="A", value=0), row="INSTALL", value=0),
        *("failed", False, ("iwiA",)),
    ),
    "the library's result": (
        engine(*engine(*action("iwiUserExit", rc=1602), row="Quit", value=0), row="INSTALL", value=0),
        *("cancelled", False, ("iwiUserExit",)),
    ),
    "the engine alone": (engine(*action("iwiA"), row="INSTALL", value=0), "failed", True, None),
    "another maker's": (
        engine(*engine(row="TheirAction", value=3), *action("iwiA"), row="INSTALL", value=3),
        *("failed", False, None),
    ),
    "as Windows shows it": (
        [f"{MSI}: Executing op: CustomActionSchedule(Action=Dirs,ActionType=3073,Source=x)", *FAILED]
        + ["Action 10:00:01: Rollback. Rolling back action:", f"{MSI}: MainEngineThread is returning 1603"],
        *("failed", False, GOT),
    ),
    "merged lines alone": (MERGED + action("iwiCleanUp"), "failed", False, GOT),
    "merged lines repeat": (FAILED + action("iwiUnSet", rc=None) + MERGED + DONE, "failed", False, GOT),
    "an external copy": (
        OUTER + FAILED + ["10:00:01 QVCA info (CaProlog): Returning with rc 1603"],
        *("failed", False, GOT),
    ),
}


class Case(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def log(self, lines, name="trace.log", encoding="cp1252", age=OLD):
        """A file of these lines or bytes that was written at that time."""
        path = self.folder / name
        path.write_bytes(lines if isinstance(lines, bytes) else "\r\n".join([*lines, ""]).encode(encoding))
        os.utime(path, (age, age))
        return path

    def diagnose(self, *arguments):
        """Exit status and what is printed, on both streams."""
        tool = [sys.executable, root / "tools/diagnose", *arguments]
        run = subprocess.run(tool, capture_output=True, encoding="utf-8", errors="replace")
        self.assertNotIn("Traceback", run.stderr)
        return run.returncode, run.stdout, run.stderr

    def only(self, *paths):
        (found,) = read(paths, True, adviser)
        return found


class Diagnosis(Case):
    def test_every_failure_line_of_the_page_leads_to_its_row(self):
        self.assertGreater(len(adviser.rows), 100)
        for row in adviser.rows:
            text = row.text.replace("%20.20s", "x" * 20).replace("%8.8lx", "00000005").replace("%s", "it's")
            text = re.sub("%(?:d|u|lu)", "5", text)
            with self.subTest(text):
                found, values = adviser.find(text)
                # Cut texts look like whole ones.
                self.assertEqual(found.text.replace("%20.20s", "%s"), row.text.replace("%20.20s", "%s"))
                self.assertEqual(len(values), row.text.count("%"))
                self.assertFalse(row.text.startswith("***") and not (found.meaning and call_of(text) is not None))

    def test_stories(self):
        for name, (lines, outcome, guessed, failed) in STORIES.items():
            for encoding in ("cp1252", "utf-16"):
                with self.subTest(name, encoding=encoding):
                    junk = ["", "[x] Property(S): A = b", "10:00:00 QVCA in", "Ä" * 200]
                    told = self.only(self.log([*junk, *lines, *junk], encoding=encoding))
                    self.assertEqual(told.outcome()[:2], (outcome, guessed))
                    first = told.first_failed
                    self.assertEqual(first.name if first else None, failed and failed[0])
                    self.assertEqual(told.rolled_back, "Windows" in name)
                    if told.rolled_back:
                        self.assertEqual(first.row, "Dirs")
                    if "merged" in name:
                        self.assertEqual((told.count, told.others()), (2 + ("repeat" in name), []))
                    if failed and len(failed) > 1:
                        self.assertEqual((told.failure.call, told.failure.argument, told.failure.code), failed[1:])

    def test_codes_are_found_in_all_their_places(self):
        for text, code in {
            "***MsiSetFeatureState(A, B) rc: 0x00000646": 1606,
            "***FindFirstFile(3) error 5, path 'C:\\error 7'": 5,
            "***OpenProcess(612) error 2 87": 87,
            "***Can't open key 'a b' 5": 5,
            "***Error 80 (0x00000050) creating 'C:\\9'": 80,
            "***Line 7 of list 'x' is no path": None,
        }.items():
            self.assertEqual(code_of(text), code, text)

    def test_logs_of_one_installation_are_one_story(self):
        cut = [line.replace("ZQVTEMP", "") for line in FAILED]
        own = [*engine(*cut, row="Dirs", value=0), *engine(*DONE, row="F")]
        own = self.log(engine(*own, row="INSTALL", value=0), "own.log")
        trace, other = self.log(FAILED + DONE), self.log(action("iwiX", at="11:11:11"), "other.log")
        for paths in ((own, trace), (trace, own)):
            told = self.only(*paths)
            self.assertEqual((told.failure.argument, told.first_failed.row, told.count), ("ZQVTEMP", "Dirs", 2))
        self.assertEqual(len(read([own, trace, other], True, adviser)), 2)
        # Some are over within a second.
        self.assertEqual(len(read([own, self.log(own.read_bytes(), "own2.log")], True, adviser)), 2)

    def test_an_appended_log_has_several_installations(self):
        start = ["09:00:00 QVCA info iwiStartLogs: Returning with rc 0"]
        log = self.log(start + FAILED + start + DONE)
        status, out, _ = self.diagnose(log)
        self.assertEqual((status, out.splitlines()[0]), (1, "2 installations: 1 failed, 1 succeeded"))
        self.assertIn("ERROR_MORE_DATA", out)

    def test_time(self):
        over = action("iwiStopAllQv", at="23:59:50", end="00:00:10") + action("iwiCleanUpFinal", at="00:00:20")
        told = self.only(self.log(over))
        self.assertEqual((told.times["iwiStopAllQv"][0], told.ended - told.begun), (20, 30))
        back = self.only(self.log(action("iwiA", at="03:00:10", end="03:00:00")))
        self.assertEqual(back.times["iwiA"][0], 0)
        fresh = self.only(self.log(action("iwiA", rc=None), age=4 * OLD))
        self.assertEqual(fresh.outcome()[:2], ("still running", True))
        temporary = self.only(self.log(action("iwiUnSetTempLogPath", rc=None), "zqvg0001.txt"))
        self.assertEqual(temporary.outcome()[:2], ("still running", True))

    def test_a_line_over_two_parts_of_the_file_is_whole(self):
        for lines in (FAILED, FAILED[:-1]):
            text = "".join(f"{line}\n" for line in lines).encode()
            for before in range(2, len(text), 9):
                told = self.only(self.log(b"x" * (CHUNK - before) + b"\n" + text))
                action = told.first_failed
                self.assertEqual((action.lines[0].number, action.last.number), (5, len(lines) + 1), before)
                self.assertEqual(action.last.text, lines[-1].split(": ", 1)[1])

    def test_what_else_is_worth_knowing_fits_the_screen(self):
        texts = ["Found process ID 612 'C:\\p.exe'", "Process ID 612 terminated", "Wait timed out after 30 seconds"]
        texts += ["Stacked file for deletion upon reboot: 'C:\\f'", "Property 'ZQVBOOT' value set to '1'"]
        texts += [row.text.replace("%s", "a" * 300) for row in adviser.rows if "%d" not in row.text] * 2
        status, out, _ = self.diagnose(self.log(action("iwiStopAllQv", *texts, end="10:01:40") + DONE))
        self.assertEqual(status, 0)
        for part in ("waits that", "processes ended", "files left"):
            self.assertIn(f"     1 x  {part}", out)
        for part in ("C:\\p.exe", "a restart is owed", "iwiStopAllQv 1 min 40 s"):
            self.assertIn(part, out)
        texts += ["***Action '%s' ended by an exception: %s" % ("b " * 300, "c " * 300)] * 2
        _, failed, _ = self.diagnose(self.log(action("iwiStopAllQv", *texts[-1:], *texts, rc=1603)))
        for text in (out, failed):
            self.assertLessEqual(len(text.splitlines()), 40)
            self.assertLessEqual(max(map(len, text.splitlines())), 120)

    def test_options(self):
        text = "SETPROPERTY('X', 'y') ignored during deferred execution"
        log = self.log(FAILED + action("iwiExec", text, modes=("SCHEDULED",)))
        self.assertRegex(self.diagnose(log, "--timeline")[1], r"10:00:00 +0 s +deferred +0 +iwiExec\n")
        said = self.diagnose(log, "--properties", "x")[1].splitlines()
        own = log.read_text().splitlines()
        again = self.log([*own, *(f">>{line}" for line in own)], "again.log")
        self.assertEqual(self.diagnose(again, log, "--properties", "X", "Y")[1].splitlines(), said)
        self.assertEqual(said[0], "10:00:00  iwiSetDirs: X read 'x' from property table")
        self.assertEqual(said[-1], "10:00:00  iwiExec: X not set to 'y': ignored during deferred execution")
        data = json.loads(self.diagnose(log, "--json")[1])["installations"][0]
        self.assertEqual((data["failure"]["code"], data["actions"][1]["phase"]), (234, "deferred"))
        page = self.folder / "page.html"
        self.assertEqual(self.diagnose(log, "--html", page)[0], 1)
        text = page.read_text(encoding="utf-8")
        picture = xml.etree.ElementTree.fromstring(re.search("<svg.*</svg>", text, re.DOTALL)[0])
        self.assertEqual(sum(rect[0].tag.endswith("title") for rect in picture if len(rect)), 2)
        self.assertEqual(re.findall(r"https?:[^\"]*|src=|href=", text), ["http://www.w3.org/2000/svg"])
        self.assertEqual(text.count("<span>"), 1 + len(log.read_text().splitlines()))

    def test_what_is_no_log_is_said_in_one_line(self):
        for lines in (None, b"", b"\0\xff" * 999, ["Dear all,"]):
            status, out, error = self.diagnose(self.folder if lines is None else self.log(lines))
            self.assertEqual((status, out, error.count("\n")), (2, "", 1), lines)

    def test_spoilt_logs(self):
        """ZQV_FUZZ_RUNS in the environment takes more of them."""
        chance = random.Random(1)
        stories = ["\r\n".join([*story[0], ""]) for story in STORIES.values()]
        whole = [text.encode(code) for text in stories for code in ("cp1252", "utf-16")]
        whole += [Path(name).read_bytes() for name in os.environ.get("ZQV_FUZZ_LOGS", "").split()]
        for run in range(int(os.environ.get("ZQV_FUZZ_RUNS", "300"))):
            parts = [chance.choice(whole)[chance.randrange(99) :] for _ in range(chance.randrange(1, 4))]
            data = bytearray(b"".join(parts))
            for _ in range(chance.randrange(20)):
                at = chance.randrange(len(data) + 1)
                new = bytes([chance.randrange(256)]) * chance.choice((0, 1, 1, 5))
                data[at : at + chance.choice((0, 1, 1, 1, 40))] = new
            path = self.log(bytes(data[: chance.randrange(len(data) + 1)]))
            with self.subTest(run):
                self.tell_all_ways(path)

    def tell_all_ways(self, path):
        from diagnosis import page, report

        try:
            found = read([path], True, adviser)
        except ValueError:
            return
        for told in found:
            self.assertTrue(all(one.end >= one.start for one in told.actions))
            json.dumps(report.as_data(told))
            report.tell_timeline(told)
        report.tell_all(found, {"failed": len(found)})
        list(report.properties([path], ["X"]))
        page.write(self.folder / "page.html", [(told, report.tell(told)) for told in found], [path])


class Sweep(Case):
    """The first action that failed, the call and the code are those that the sweep has made to fail."""

    def runs(self, path):
        """What was made to fail, and the log, of each run."""
        for part in re.split("^@ ", path.read_bytes().decode("cp1252"), flags=re.MULTILINE)[1:]:
            head, lines = part.split("\n", 1)
            yield head.split(" ", 3), lines.encode("cp1252")

    def test_what_was_made_to_fail_is_named(self):
        swept = self.folder / "sweep"
        swept.mkdir()
        which = os.environ.get("ZQV_SWEEP_FILTER", "Sweep/FaultSweep.*/iwiSetDirs_*")
        given = os.environ | {"ZQV_SWEEP_LOGS": str(swept)}
        call = [host_tests, f"--gtest_filter={which}"]
        self.assertEqual(subprocess.run(call, env=given, stdout=subprocess.DEVNULL).returncode, 0)
        total, wrong, same = 0, collections.Counter(), collections.Counter()
        for path in sorted(swept.iterdir()):
            runs = self.runs(path)
            (_, _, usual, _), log = next(runs)
            name = re.findall(rb"QVCA info (.*?): ", log)[-1].decode()
            for (call, code, result, argument), log in runs:
                if result not in ("0", usual):
                    total += 1
                    told = self.only(self.log(log))
                    problem = self.problem(told, name, SWEPT.get(call, call.removesuffix("A")), int(code))
                    wrong[f"{path.stem.rsplit('_', 1)[0]}, {call}: {problem}"] += problem is not None
                    if argument and told.failure and (named := told.failure.argument.rstrip("\\")):
                        same[named in argument or argument in named] += 1
        share = 1 - wrong.total() / total
        if "ZQV_SWEEP_FILTER" in os.environ:
            print(f"{total} failing runs, {share:.2%} right; arguments: {same}; others:")
            print(*(+wrong).most_common(), sep="\n")
        self.assertTrue(total > 20 and share >= 0.98, (+wrong).most_common(20))

    def problem(self, told, name, call, code):
        action, failure = told.first_failed, told.failure
        if action is None or action.name not in (name, ""):
            return "action"
        if failure is None or call not in re.split(", | or ", failure.call):
            return f"call: {failure and failure.line.text}"
        # A field that is no number has no code of its own.
        if failure.code not in (None, code) and call != "MsiRecordGetInteger":
            return f"code: {failure.line.text}"
        return None


if __name__ == "__main__":
    unittest.main()
