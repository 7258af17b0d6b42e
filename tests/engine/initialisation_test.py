#!/usr/bin/env python3
"""Primary initialisation in Wine's installer engine: what it publishes, and what makes it stop an installation.

usage: initialisation_test.py BUILD_WINDOWS_DIR [unittest arguments]

The Wine prefix is the folder wine-initialisation_test beside the build folder; each test removes what it installed.
"""

import re
import shutil
import subprocess
import sys
import time
import unittest

sys.dont_write_bytecode = True
from case import message, prepare
from installation import FAILED, PATIENCE, published, read_text

FOLDER = "initialisation_test"
TEMP = rf"C:\{FOLDER}"
KEY = r"HKLM\Software\Korvex\QVSeries"
VERSION = rf"{KEY}\CurrentVersion"
CLIENT, TEST = "{5A8B5D80-6DCC-4317-9922-99EC0093BF24}", "{62F00881-AC47-458F-BF38-2B84B38DBA50}"
LANGUAGES = {
    "a": ("English", "en_us"),
    "b": ("Portuguese", "pt_br"),
    "f": ("French", "fr_fr"),
    "g": ("German", "de_de"),
    "h": ("Hungarian", "hu_hu"),
    "i": ("Italian", "it_it"),
    "j": ("Japanese", "ja_jp"),
    "k": ("Korean", "ko_kr"),
    "r": ("Russian", "ru_ru"),
    "s": ("Spanish", "es_es"),
    "t": ("Traditional Chinese", "zh_tw"),
    "z": ("Simplified Chinese", "zh_cn"),
}
NO_LANGUAGE = "DELETE FROM `UIText` WHERE `Key`='ZQV__setup_language'"


def language(text):
    return f"UPDATE `UIText` SET `Text`='{text}' WHERE `Key`='ZQV__setup_language'"


def as_logged(text):
    """A pattern of a text in the code page of the prefix, which lacks the letters of many languages."""
    return "".join(re.escape(c) if ord(c) < 128 else "." for c in text)


class Initialisation(unittest.TestCase):
    def setUp(self):
        # A test that was cut short may have left the product, and what stands for an earlier one.
        if machine.product_files():
            machine.wine("wine", "msiexec", "/x", package.properties["ProductCode"], "/qn", "QVNOSTOP=1")
        machine.wine("wine", "reg", "delete", KEY, "/f", "/reg:32")
        self.folder = machine.fresh_folder(FOLDER)
        self.addCleanup(shutil.rmtree, self.folder)

    def variant(self, *queries):
        """The package, with changes to its tables."""
        return package.variant(self.folder / "variant.msi", *queries)

    def value(self, key, *value):
        """Makes a key of the registry, or a value in it."""
        named = ("/v", value[0], "/d", value[1]) if value else ()
        self.assertEqual(machine.wine("wine", "reg", "add", key, *named, "/f", "/reg:32"), 0)
        self.addCleanup(machine.wine, "wine", "reg", "delete", KEY, "/f", "/reg:32")

    def install(self, of, *options, status=0, verb="/i"):
        """Gives the texts of the action's lines and the properties that it published."""
        (self.folder / "zqvt0001.log").unlink(missing_ok=True)
        run = machine.msiexec(verb, of.path, FOLDER, f"ZQVTEMP={TEMP}", "QVNOSTOP=1", *options)
        self.assertEqual(run.status, status)
        if status != 0 or verb == "/x":
            self.assertEqual(machine.product_files(), {})
        lines = [line for line in read_text(self.folder / "zqvt0001.log").splitlines() if not line.startswith(">>")]
        own = [line.split(" iwiInstallInitPri: ")[1] for line in lines if " iwiInstallInitPri: " in line]
        return own, published(lines)

    def stopped(self, of, *options):
        return self.install(of, *options, status=FAILED)

    def boxes(self, lines):
        return [line.split(" MB error: ")[1] for line in lines if " MB error: " in line]

    def test_the_three_packages(self):
        for code, expected in (
            (None, {"ZQVPRODUCT": "server", "ZQVSETUPTITLE": "Vantrel QV V6.0 Setup", "ZQVREMOVE": "0"}),
            (CLIENT, {"ZQVPRODUCT": "client", "ZQVSETUPTITLE": "Vantrel QV V6.0 Client Setup"}),
            (TEST, {"ZQVPRODUCT": "test", "ZQVLANGUAGE": "English", "ZQVDISKFOLDERNAME": "static data error"}),
        ):
            queries = [f"UPDATE `Property` SET `Value`='{code}' WHERE `Property`='UpgradeCode'"] if code else []
            of = self.variant(*queries, *([language("j")] if code == TEST else []))
            lines, found = self.install(of)
            self.assertLessEqual(expected.items(), found.items())
            self.assertEqual(found["ZQVVRMF"], "6.0.2.0")
            self.assertRegex(found["ZQVBUILDDATE"], r"^Packaged on [A-Z][a-z]{2} \d\d \d{4} at \d\d:\d\d; version [\d.]+$")
            self.assertEqual("ZQVSNAPSERVICES" in found, code != CLIENT)
            self.assertEqual("TEST EXECUTION" in lines, code == TEST)
            self.assertFalse([line for line in lines if line.startswith("***")])
            product = of.properties["ProductCode"]
            lines, found = self.install(of, verb="/x")
            self.assertEqual(found["ZQVREMOVE"], "1")
            # Only now is there a product to be found.
            state = f"Product {product} ({'Client' if code == CLIENT else 'Server'}) state is INSTALLSTATE_DEFAULT"
            self.assertEqual(state in lines, code != TEST)

    def test_each_language(self):
        for letter, (name, folder) in LANGUAGES.items():
            lines, found = self.stopped(self.variant(language(letter.upper() + "x")), r"WIZPARMFILE=C:\none")
            self.assertEqual((found["ZQVLANGUAGECODE"], found["ZQVLANGUAGE"]), (letter, name))
            for number, property in ((2001, "ZQVSETUPTITLE"), (406, "ZQVSTARTFOLDER")):
                text = message(number, folder).replace("%s", "6.0")
                self.assertRegex(found[property], f"^{as_logged(text)}$")
            said = as_logged(message(2034, folder).replace("%1", r"C:\none"))
            self.assertRegex(self.boxes(lines)[0], f"^{said}$")
        lines, found = self.stopped(self.variant(language("Q")), r"WIZPARMFILE=C:\none")
        self.assertIn("Unknown language code 'q'; using English", lines)

    def test_an_earlier_version(self):
        for name, text in (("VRMF", "5.3.0.2"), ("PgmFolder", rf"{TEMP}\old"), ("HighContrastMode", "1")):
            self.value(VERSION, name, text)
        levels = {"Maint 1.3": "old3", "Maint.1.10": "old10", "Maint 2.1": "gone", "shipped": "0.2"}
        for name, text in levels.items():
            self.value(rf"{VERSION}\Maintenance Applied", name, text if name == "shipped" else rf"{TEMP}\{text}")
        for name in ("old3", "old10"):
            (self.folder / name).mkdir()
            (self.folder / name / "Valid.csd").touch()
        lines, found = self.stopped(package, "ZQVSERVICESHIPLEVEL=01.2.3")
        at = lines.index("Latest maintenance level is '1.10'")
        expected = [rf"RollBack value is '{TEMP}\old10'", "Previous maintenance level is '1.3'"]
        self.assertEqual(lines[at + 1 : at + 4], [*expected, "Shipped maintenance level is '0.2'"])
        self.assertIn("Registry VRMF is '5.3.0.2' (5.3.0.2)", lines)
        self.assertIn("Maintenance level '2.1' is not currently installed", lines)
        self.assertLessEqual({"ZQVMIGRATE": "1", "ZQVHIGHCONTRAST": "1"}.items(), found.items())
        # A stop without a text of its own shows the general one.
        self.assertIn("***Invalid Modification.Fix Level 'ZQVSERVICESHIPLEVEL'", lines)
        self.assertEqual(self.boxes(lines), [message(2041)])

    def test_what_stops_an_installation(self):
        for pac, switch, number in (("MC74", "ZQVCHECKMSCS", 2053), ("MA0C", "ZQVCHECKPUBSUB", 2054)):
            self.value(rf"{VERSION}\SupportPacs Applied\{pac}")
            self.assertEqual(self.boxes(self.stopped(package, f"{switch}=1")[0]), [message(number)])
        answers = self.folder / "answers.ini"
        answers.write_text("[Response]\nADDLOCAL=Base,Nothing\n")
        from_file = rf"Unknown feature(s) 'Nothing' in property 'ADDLOCAL' in '{TEMP}\answers.ini'. (ZQV4742)"
        from_line = "Unknown feature(s) 'base' in command-line property 'ADDLOCAL'. (ZQV4740)"
        for option, text in ((rf"USEINI={TEMP}\answers.ini", from_file), ("ADDLOCAL=Server,base", from_line)):
            lines, _ = self.stopped(package, option)
            self.assertEqual(self.boxes(lines), [text])
            self.assertIn("***Stopping because of unknown features", lines)
        for query in (NO_LANGUAGE, language("")):
            self.assertEqual(self.boxes(self.stopped(self.variant(query))[0]), [message(2031)])

    def start(self, command, **options):
        """A process that the test ends at the latest."""
        process = subprocess.Popen(command, **options)

        def end():
            process.kill()
            process.communicate()

        self.addCleanup(end)
        return process

    def test_a_person_sees_the_box_and_answers_it(self):
        self.variant(NO_LANGUAGE)
        # A desktop that was made without a display would stay without one. What is killed while it starts might make it.
        machine.wine("wineserver", "--wait")
        self.addCleanup(machine.wine, "wineserver", "--kill")
        screen = ["Xvfb", "-displayfd", "1", "-screen", "0", "800x600x24", "-nolisten", "tcp"]
        display = self.start(screen, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        seen = {**machine.environment, "DISPLAY": ":" + display.stdout.readline().strip()}
        options = ("/qb", "/l*v", rf"{TEMP}\msiexec.log", f"ZQVTEMP={TEMP}", "QVNOSTOP=1")
        command = machine.command("wine", "msiexec", "/i", rf"{TEMP}\variant.msi", *options)
        installation = self.start(command, env=seen)
        box = ["xdotool", "search", "--onlyvisible", "--name", "^Korvex Vantrel QV$"]
        answered = False
        for _ in range(10 * PATIENCE):
            if installation.poll() is not None:
                break
            time.sleep(0.1)
            found = subprocess.run(box, env=seen, capture_output=True, text=True).stdout.strip()
            # A key that comes before the box is ready is lost, so there is one each time.
            if found:
                key = subprocess.run(["xdotool", "windowfocus", found, "key", "Return"], env=seen, capture_output=True)
                answered = answered or key.returncode == 0
        self.assertTrue(answered, "no message box")
        self.assertEqual(installation.poll(), FAILED)
        lines = read_text(self.folder / "zqvt0001.log")
        self.assertIn(f"QVCA iwiInstallInitPri MB error: {message(2031)}", lines)
        self.assertEqual(machine.product_files(), {})


if __name__ == "__main__":
    build, package, machine = prepare(__doc__)
    unittest.main()
