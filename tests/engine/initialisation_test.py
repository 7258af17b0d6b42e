#!/usr/bin/env python3
"""Primary initialisation in Wine's installer engine: what it publishes, and what makes it stop an installation."""

import re
import sys
import unittest

sys.dont_write_bytecode = True
from case import FOLDER, TEMP, VERSION, Case, build, machine, message, package
from dialogs import Screen
from installation import FAILED, published

CLIENT = "{5A8B5D80-6DCC-4317-9922-99EC0093BF24}"
# Letters that the code page of the prefix has, that take two bytes, and that are of another alphabet.
LANGUAGES = {"g": ("German", "de_de"), "j": ("Japanese", "ja_jp"), "r": ("Russian", "ru_ru")}


def language(text):
    return f"UPDATE `UIText` SET `Text`='{text}' WHERE `Key`='ZQV__setup_language'"


def as_logged(text):
    """A pattern of a text in the code page of the prefix, which lacks the letters of many languages."""
    return "".join(re.escape(c) if ord(c) < 128 else "." for c in text)


class Initialisation(Case):
    def variant(self, *queries):
        """The package, with changes to its tables."""
        return package.variant(self.folder / "variant.msi", *queries)

    def told(self, run):
        """The texts of the action's lines and the properties that it published."""
        name = "iwiInstallInitPri: "
        own = [text.removeprefix(name) for text in self.texts() if text.startswith(name)]
        if run.status != 0 or run.verb == "/x":
            self.assertEqual(machine.product_files(), {})
        return own, published(self.read())

    def stopped(self, of, *options):
        return self.told(self.install(*options, of=of, status=FAILED))

    def boxes(self, lines):
        return [line.split(" MB error: ")[1] for line in lines if " MB error: " in line]

    def test_the_packages(self):
        for code, expected in (
            (None, {"ZQVPRODUCT": "server", "ZQVSETUPTITLE": "Vantrel QV V6.0 Setup", "ZQVREMOVE": "0"}),
            (CLIENT, {"ZQVPRODUCT": "client", "ZQVSETUPTITLE": "Vantrel QV V6.0 Client Setup"}),
        ):
            queries = [f"UPDATE `Property` SET `Value`='{code}' WHERE `Property`='UpgradeCode'"] if code else []
            of = self.variant(*queries)
            lines, found = self.told(self.install(of=of))
            self.assertLessEqual(expected.items(), found.items())
            self.assertEqual(found["ZQVVRMF"], "6.0.2.0")
            self.assertRegex(found["ZQVBUILDDATE"], r"^Packaged on [A-Z][a-z]{2} \d\d \d{4} at \d\d:\d\d; version [\d.]+$")
            self.assertEqual("ZQVSNAPSERVICES" in found, code != CLIENT)
            self.assertFalse([line for line in lines if line.startswith("***")])
            product = of.properties["ProductCode"]
            lines, found = self.told(self.remove(of=of))
            self.assertEqual(found["ZQVREMOVE"], "1")
            # Only now is there a product to be found.
            state = f"Product {product} ({'Client' if code == CLIENT else 'Server'}) state is INSTALLSTATE_DEFAULT"
            self.assertIn(state, lines)

    def test_languages(self):
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
        self.place("old3/Valid.csd", "old10/Valid.csd")
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

    def test_support_pacs_of_an_earlier_version(self):
        for pac, switch, number in (("MC74", "ZQVCHECKMSCS", 2053), ("MA0C", "ZQVCHECKPUBSUB", 2054)):
            self.value(rf"{VERSION}\SupportPacs Applied\{pac}")
            self.assertEqual(self.boxes(self.stopped(package, f"{switch}=1")[0]), [message(number)])

    def test_a_person_sees_the_box_and_answers_it(self):
        of = self.variant("DELETE FROM `UIText` WHERE `Key`='ZQV__setup_language'")
        screen = Screen(machine, build / "dialogs.exe")
        self.addCleanup(screen.close)
        box = screen.open(of, FOLDER, "/qb", *self.options)
        self.assertEqual(box.next(), message(2027))
        box.use("OK")
        self.assertEqual((box.next(), box.status), (None, 1603))
        self.assertIn(f"iwiInstallInitPri: QVCA iwiInstallInitPri MB error: {message(2031)}", self.texts())
        self.assertEqual(machine.product_files(), {})


if __name__ == "__main__":
    unittest.main()
