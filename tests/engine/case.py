"""What the tests of whole installations share. Each is a program with a Wine prefix of its own beside the build folder,
wine-NAME_test, so that all may run at the same time."""

import re
import shutil
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))
from installation import Hung, Machine, Package, read_text

if len(sys.argv) < 2 or not (Path(sys.argv[1]) / "vantrelqv.msi").exists():
    sys.exit(f"usage: {sys.argv[0]} BUILD_WINDOWS_DIR [unittest arguments]")
build = Path(sys.argv.pop(1)).resolve()
FOLDER = Path(sys.argv[0]).stem
TEMP = rf"C:\{FOLDER}"
OWN = f"{FOLDER}/own folders"  # for the product, where it is not at its default places
TRACE = "zqvt0001.log"
MAKER = r"HKLM\Software\Korvex"
KEY = rf"{MAKER}\QVSeries"
VERSION = rf"{KEY}\CurrentVersion"
LATER = "{11111111-2222-4333-8444-555555555555}"  # the product code of a later version
package = Package(build / "vantrelqv.msi")
machine = Machine(build.parent / f"wine-{FOLDER}")


def message(number, language="en_us"):
    """A text as its table gives it."""
    table = (ROOT / "catalogue" / language / "messages.txt").read_text(encoding="utf-8")
    return re.search(rf"^{number}\s+(.*)$", table, re.MULTILINE)[1]


class Case(unittest.TestCase):
    """Each test installs the package, with an empty temporary folder of its own, and leaves nothing of it."""

    options = (f"ZQVTEMP={TEMP}", "QVNOSTOP=1", "AGREETOLICENSE=yes")

    def setUp(self):
        self.clear()  # of what a test that was cut short has left
        self.folder = machine.fresh_folder(FOLDER)
        self.addCleanup(shutil.rmtree, self.folder)
        self.addCleanup(self.clear)

    def _callTestMethod(self, method):
        """A test in which the engine has hung begins once more. In a thousand installations or so one of Wine's remote
        calls is never answered: what runs the library waits for the engine, and the engine for nobody."""
        try:
            method()
        except Hung as hung:
            print(f"{self.id()} begins once more: {hung}", file=sys.stderr)
            self.doCleanups()
            self.setUp()
            method()

    def clear(self):
        """Takes away whatever is installed."""
        (machine.drive / FOLDER).mkdir(exist_ok=True)
        for code in (package.properties["ProductCode"], LATER):
            if machine.product_files(OWN):
                machine.msiexec("/x", code, FOLDER, f"ZQVTEMP={TEMP}", "QVNOSTOP=1")
        self.assertEqual(machine.product_files(OWN), {})
        self.registry("delete", MAKER)  # the kit is none of the product's

    def install(self, *options, **more):
        return self.msiexec("/i", *options, **more)

    def remove(self, *options, **more):
        return self.msiexec("/x", *options, **more)

    def msiexec(self, verb, *options, status=0, of=package, **more):
        """Runs the installer, which is to end with that status, and begins a new trace log."""
        (self.folder / TRACE).unlink(missing_ok=True)
        run = machine.msiexec(verb, of.path, FOLDER, *self.options, *options, **more)
        self.assertEqual(run.status, status)
        return run

    def expect_actions(self, run, *more, first=True):
        """Every action without a condition, and those of `more`, ran once and gave 0; gives their number."""
        ran = [(outcome.action, outcome.value, outcome.results) for outcome in run.outcomes() if outcome.results]
        expected = package.actions(first and run.verb == "/i", more, run.verb == "/x")
        self.assertCountEqual(ran, [(action, 1, [0]) for action in expected])
        return len(expected)

    def read(self, name=TRACE):
        return read_text(self.folder / name).splitlines()

    def texts(self, name=TRACE):
        """Action and text of each line of a log, without merged lines and time stamps."""
        return [line.split(" QVCA info ", 1)[1] for line in self.read(name) if not line.startswith(">>")]

    def place(self, *names):
        """Makes empty files in the folder."""
        for name in names:
            path = self.folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.touch()

    def machine_state(self):
        """The files elsewhere, but for the system's own folder, and the software's part of the registry, but for the
        engine's own records."""
        files = {path for path in machine.drive.rglob("*") if path.is_file()}
        own = {path for path in files if path.is_relative_to(self.folder)}
        system = {path for path in files if path.is_relative_to(machine.drive / "windows")}
        temporary = set((machine.drive / "windows/temp").rglob("*"))
        registry = machine.read("wine", "reg", "query", r"HKLM\Software", "/s", "/reg:32").split("\n\n")
        values = {key for key in registry if r"\Installer" not in key}
        return files - own - system | temporary | values

    def registry(self, verb, key, *arguments):
        """The exit status of a command on the registry."""
        force = [] if verb == "query" else ["/f"]
        return machine.wine("wine", "reg", verb, key, *arguments, *force, "/reg:32")

    def value(self, key, *value):
        """Makes a key, or a value in it."""
        named = ("/v", value[0], "/d", value[1]) if value else ()
        self.assertEqual(self.registry("add", key, *named), 0)
